#include "sim/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace quorvelsim {

namespace {

constexpr double kLargestReading = 999.999;

bool isDigit(char character) { return character >= '0' && character <= '9'; }

/// "%+0*.*f" with a zero that never carries "-": a readout counts -0.000001 as 0.
std::string fixedField(double value, int width, int decimals)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%+0*.*f", width, decimals, value);
    std::string field = buffer;
    if (field.find_first_of("123456789") == std::string::npos) field[0] = '+';
    return field;
}

} // namespace

std::string twoHex(int value)
{
    constexpr std::string_view kHex = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned>(value) & 0xFFU;
    return {kHex[byte >> 4U], kHex[byte & 15U]};
}

std::string digits(int value, int width)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*d", width, value);
    return buffer;
}

std::optional<int> decimal(std::string_view text)
{
    if (text.empty() || text.size() > 9 || !std::all_of(text.begin(), text.end(), isDigit))
        return std::nullopt;
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::optional<int> hexByte(std::string_view text)
{
    if (text.size() != 2) return std::nullopt;
    int value = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, 16);
    if (result.ec != std::errc{} || result.ptr != end || value < 0) return std::nullopt;
    return value;
}

std::string readingField(double millimetres)
{
    const auto value = std::clamp(millimetres, -kLargestReading, kLargestReading);
    // The next form takes over where the digits of this one would round up to one place more.
    const auto magnitude = std::fabs(value);
    if (magnitude < 9.999995) return fixedField(value, 8, 5);
    return fixedField(value, 8, magnitude < 99.99995 ? 4 : 3);
}

std::string recordField(double millimetres)
{
    return fixedField(std::clamp(millimetres, -kLargestReading, kLargestReading), 8, 3);
}

std::optional<double> signedNumber(std::string_view text)
{
    if (text.size() < 2 || (text[0] != '+' && text[0] != '-')) return std::nullopt;
    const auto body = text.substr(1);
    const auto points = std::count(body.begin(), body.end(), '.');
    const auto digitCount = std::count_if(body.begin(), body.end(), isDigit);
    if (points > 1 || digitCount == 0 || points + digitCount != static_cast<std::ptrdiff_t>(body.size()))
        return std::nullopt;
    double value = 0;
    std::from_chars(body.data(), body.data() + body.size(), value, std::chars_format::fixed);
    return text[0] == '-' ? -value : value;
}

std::string_view mid(std::string_view text, std::size_t position, std::size_t count)
{
    if (position < 1 || position > text.size()) return {};
    return text.substr(position - 1, count);
}

bool isFrameCharacter(char character) { return character >= ' ' && character <= '~' && character != ':'; }

std::string_view nextWord(std::string_view& line)
{
    const auto start = line.find_first_not_of(" \t\r");
    if (start == std::string_view::npos) {
        line = {};
        return {};
    }
    const auto end = std::min(line.find_first_of(" \t\r", start), line.size());
    const auto word = line.substr(start, end - start);
    line.remove_prefix(end);
    return word;
}

} // namespace quorvelsim
