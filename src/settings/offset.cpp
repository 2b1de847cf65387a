#include "settings/offset.h"

#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <cmath>

namespace quorvel::settings {

namespace {

constexpr std::string_view kFormats[] = {"0.00000", "00.0000", "000.000"};
constexpr double kTooLarge = 1000;
constexpr double kLargest = 999.999;

} // namespace

bool hasDirection(link::InstrumentType type, const Direction& direction)
{
    if (direction.name == 'Y') return type != link::TypeD;
    return direction.name == 'X' || type == link::TypeC;
}

std::string signedValue(const Direction& direction, double value)
{
    if (std::fabs(value) < kTooLarge) value = std::clamp(value, -kLargest, kLargest);
    std::string written;
    for (const auto format : kFormats) {
        written = value < 0 ? text::format(value, std::string(direction.negativeMark).append(format))
                            : "+" + text::format(value, format);
        if (written.size() == kValueLength) break;
    }
    return written;
}

bool isSignedValue(std::string_view text)
{
    const bool isSigned = text.starts_with('+') || text.starts_with('-');
    const bool isPlain = text.find_first_not_of("0123456789.", 1) == std::string_view::npos;
    return text.size() == kValueLength && isSigned && isPlain && text::isNumber(text);
}

Exchange offsetSet(const Direction& direction, std::string_view addressDigits, std::string_view value)
{
    const auto command = std::string(direction.setCode).append(value).append("FF");
    return {.frame = frameOf(addressDigits, command),
            .replyLength = direction.replyLength,
            .echoLength = direction.echoLength};
}

Exchange offsetQuery(const Direction& direction, std::string_view addressDigits)
{
    return {.frame = frameOf(addressDigits, direction.queryCommand), .replyLength = direction.replyLength};
}

std::string offsetOf(const Direction& direction, std::string_view reply)
{
    return std::string(text::mid(reply, direction.valuePosition, kValueLength));
}

std::string offsetText(const Direction& direction, std::string_view value)
{
    return std::string(direction.queryText).append(value).append("!");
}

} // namespace quorvel::settings
