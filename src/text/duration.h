#pragma once

#include <string>

namespace quorvel::text {

/// How long something still takes: "about 2 min 17 s left", "about 9 s left". Part of a second counts as one.
/// @param seconds  0 or more.
std::string timeLeft(double seconds);

} // namespace quorvel::text
