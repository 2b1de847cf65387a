#pragma once

#include <string>
#include <string_view>

namespace quorvel::autoread {

/// ":" + the two address digits + the command + "FF" and the line end.
std::string commandFrame(std::string_view addressDigits, std::string_view command);

} // namespace quorvel::autoread
