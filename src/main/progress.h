#pragma once

#include <QProgressBar>

namespace quorvel {

/// Shows in a bar that nothing is under way.
inline void emptyBar(QProgressBar& bar)
{
    bar.setMaximum(1);
    bar.setValue(0);
    bar.setFormat(QString());
}

} // namespace quorvel
