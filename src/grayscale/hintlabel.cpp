#include "grayscale/hintlabel.h"

#include <QPainter>
#include <QStyle>

namespace quorvel::grayscale {

void HintLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const int flags = static_cast<int>(alignment()) | (wordWrap() ? Qt::TextWordWrap : 0);
    style()->drawItemText(&painter, contentsRect(), flags, palette(), isEnabled(), text().remove(u'\r'),
                          foregroundRole());
}

} // namespace quorvel::grayscale
