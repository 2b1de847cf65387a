#include "protocol/offset.h"

#include "text/number.h"

#include <algorithm>
#include <cmath>

namespace quorvel::protocol {

namespace {

constexpr std::string_view kFormats[] = {"0.00000", "00.0000", "000.000"};
constexpr double kTooLarge = 1000;
constexpr double kLargest = 999.999;

} // namespace

std::string signedValue(const OffsetRow& row, double value)
{
    if (std::fabs(value) < kTooLarge) value = std::clamp(value, -kLargest, kLargest);
    std::string written;
    for (const auto format : kFormats) {
        written = value < 0 ? text::format(value, std::string(row.negativeMark).append(format))
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

link::Transaction offsetSet(const OffsetRow& row, std::string_view addressDigits, std::string_view value)
{
    return transaction(row.set, addressDigits, value);
}

link::Transaction offsetQuery(const OffsetRow& row, std::string_view addressDigits)
{
    return transaction(row.query, addressDigits);
}

std::string offsetOf(const OffsetRow& row, std::string_view reply)
{
    return std::string(field(row.query, 0, reply));
}

std::string offsetText(const OffsetRow& row, std::string_view value)
{
    return std::string(row.queryText).append(value).append("!");
}

} // namespace quorvel::protocol
