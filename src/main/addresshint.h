#pragma once

#include <QString>

namespace quorvel {

/// The warning for an address box whose text does not name one readout: which readout its frames reach, if any.
/// @param text  of the box, as typed.
/// @return empty for a text that begins with a number from 1 to 249.
QString addressHint(const QString& text);

/// The same for a window that sends nothing before its box names one readout.
QString oneReadoutHint(const QString& text);

} // namespace quorvel
