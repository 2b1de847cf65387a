#pragma once

#include <string>

namespace quorvel::text {

/// How long something still takes: "about 2 min 17 s left", "about 9 s left". Part of a second counts as one.
/// @param seconds  0 or more.
std::string timeLeft(double seconds);

/// A time span in its two largest units: "9 s", "2 min 17 s", "3 h 0 min", "12 days 4 h".
/// @param seconds  0 or more; rounded to whole ones.
std::string duration(double seconds);

} // namespace quorvel::text
