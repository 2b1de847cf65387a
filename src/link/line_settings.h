#pragma once

#include <optional>
#include <string_view>

namespace quorvel::link {

/// How characters travel on the line.
struct LineSettings {
    int baud = 9600;
    char parity = 'n'; ///< lower case: n none, e even, o odd, m mark, s space
    int dataBits = 8;  ///< 5..8
    int stopBits = 1;  ///< 1 or 2
    bool rts = false;  ///< request to send, switched on after opening
    bool dtr = false;  ///< data terminal ready, switched on after opening
};

/// Reads "9600,n,8,1": baud, parity letter (either case), data bits, stop bits.
/// @return nothing when the text has another form or a value that no serial port has.
std::optional<LineSettings> parseLineSettings(std::string_view text);

} // namespace quorvel::link
