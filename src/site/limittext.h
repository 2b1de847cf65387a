#pragma once

#include "site/sitefile.h"

#include <QString>

#include <optional>

/// Limits as they are shown and typed in a table.
namespace quorvel::site {

/// "-2 to 2.5", "-2 to" or "to 2.5" where one side is open, empty without a limit.
QString limitText(const Limit& limit);

/// Reads what limitText() writes; also "+-2" or "±2" for "-2 to 2". Blanks do not matter.
/// @return nothing when it is something else, the low side is above the high one, or a number is beyond kMostLimitMm.
std::optional<Limit> limitOf(const QString& text);
inline constexpr double kMostLimitMm = 1e6;

/// What limitOf() takes, for a person.
inline constexpr auto kLimitForm = "\"-2 to 2\", \"-2 to\", \"to 2\" or \"+-2\", in mm";

/// "above 2.5" or "below -2" for a value that passes the limit; empty for one that does not.
QString passedText(const Limit& limit, double mm);

} // namespace quorvel::site
