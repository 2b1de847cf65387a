#include "link/line_settings.h"

#include "text/number.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace quorvel::link {

namespace {

// What serial ports can do.
constexpr double kLowestBaud = 50;
constexpr double kHighestBaud = 4'000'000;

/// The texts between the commas, as many as "9600,n,8,1" has; nothing when there are more or fewer.
std::optional<std::array<std::string_view, 4>> fourFields(std::string_view text)
{
    std::array<std::string_view, 4> fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const auto comma = text.find(',');
        const bool last = i + 1 == fields.size();
        if ((comma == std::string_view::npos) != last) return std::nullopt;
        fields[i] = text.substr(0, comma);
        if (!last) text.remove_prefix(comma + 1);
    }
    return fields;
}

} // namespace

std::optional<LineSettings> parseLineSettings(std::string_view text)
{
    const auto fields = fourFields(text);
    if (!fields) return std::nullopt;
    const auto& [baud, parity, dataBits, stopBits] = *fields;
    LineSettings line;
    line.baud = static_cast<int>(std::min(text::Val(baud), kHighestBaud + 1));
    line.parity =
        parity.size() == 1 ? static_cast<char>(std::tolower(static_cast<unsigned char>(parity[0]))) : '?';
    line.dataBits = text::integerOf(dataBits);
    line.stopBits = text::integerOf(stopBits);
    const bool valid = text::allDigits(baud) && line.baud >= kLowestBaud && line.baud <= kHighestBaud &&
                       std::string_view("neoms").find(line.parity) != std::string_view::npos &&
                       line.dataBits >= 5 && line.dataBits <= 8 && line.stopBits >= 1 && line.stopBits <= 2;
    return valid ? std::optional(line) : std::nullopt;
}

} // namespace quorvel::link
