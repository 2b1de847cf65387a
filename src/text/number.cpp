#include "text/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace quorvel::text {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t skipDigits(std::string_view text, std::size_t at)
{
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at;
}

std::size_t skipBlanks(std::string_view text, std::size_t at)
{
    return std::min(text.find_first_not_of(kBlanks, at), text.size());
}

/// What Val() found: the value, and where the number ends (0 when there is none).
struct LeadingNumber {
    double value = 0;
    std::size_t end = 0;
};

/// The end of a complete exponent ("e-5") at `at`, or `at` itself when there is none.
std::size_t skipExponent(std::string_view text, std::size_t at)
{
    if (at >= text.size() || (text[at] != 'e' && text[at] != 'E')) return at;
    auto digits = at + 1;
    if (digits < text.size() && (text[digits] == '+' || text[digits] == '-')) ++digits;
    const auto end = skipDigits(text, digits);
    return end > digits ? end : at;
}

/// The whole number after "e" or "E"; one that is too long for the type becomes its largest of that sign.
std::int64_t exponentOf(std::string_view digits)
{
    constexpr auto kBeyond = std::numeric_limits<std::int32_t>::max();
    if (digits.empty()) return 0;
    const bool negative = digits.front() == '-';
    if (negative || digits.front() == '+') digits.remove_prefix(1);
    std::int32_t exponent = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    if (read.ec == std::errc::result_out_of_range) exponent = kBeyond;
    return negative ? -std::int64_t{exponent} : exponent;
}

/// std::from_chars leaves the value alone when it is out of range, and does not say at which end: the place of
/// the first digit that counts, moved by the exponent, does.
double outOfRange(std::string_view number)
{
    const auto mantissa = number.substr(0, number.find_first_of("eE"));
    const auto point = std::min(mantissa.find('.'), mantissa.size());
    const auto first = std::min(mantissa.find_first_not_of("0."), mantissa.size());
    const auto exponent = exponentOf(number.substr(std::min(mantissa.size() + 1, number.size())));
    const auto place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first) + exponent;
    return place < 0 ? 0 : std::numeric_limits<double>::max();
}

LeadingNumber leadingNumber(std::string_view text)
{
    auto at = skipBlanks(text, 0);
    bool negative = false;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) {
        negative = text[at] == '-';
        at = skipBlanks(text, at + 1);
    }
    const auto start = at;
    at = skipDigits(text, at);
    auto digits = at - start;
    if (at < text.size() && text[at] == '.') {
        const auto fraction = at + 1;
        at = skipDigits(text, fraction);
        digits += at - fraction;
    }
    if (digits == 0) return {};
    at = skipExponent(text, at);

    const auto number = text.substr(start, at - start);
    double value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error == std::errc::result_out_of_range) value = outOfRange(number);
    return {negative ? -value : value, at};
}

/// A number as its decimal digits: 0.d1d2d3... x 10^exponent. Zero and what is not finite have no digits.
struct Decimal {
    bool negative = false;
    std::string digits;
    int exponent = 0;
};

template<typename Number>
Decimal shortestDecimal(Number value)
{
    Decimal decimal;
    if (value == 0 || !std::isfinite(value)) return decimal;
    decimal.negative = value < 0;
    std::array<char, 40> buffer{};
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(value),
                                       std::chars_format::scientific);
    const std::string_view text(buffer.data(), static_cast<std::size_t>(written.ptr - buffer.data()));
    const auto e = text.find('e');
    for (const char c : text.substr(0, e)) {
        if (isDigit(c)) decimal.digits += c;
    }
    // from_chars takes no leading "+"
    const auto power = text.substr(e + 1 + (text[e + 1] == '+' ? 1 : 0));
    std::from_chars(power.data(), power.data() + power.size(), decimal.exponent);
    ++decimal.exponent;
    return decimal;
}

/// Keeps the first `count` digits (0 or less: none), halves away from zero.
void roundDigits(Decimal& decimal, int count)
{
    if (count >= static_cast<int>(decimal.digits.size())) return;
    const bool up = count >= 0 && decimal.digits[static_cast<std::size_t>(count)] >= '5';
    decimal.digits.resize(static_cast<std::size_t>(std::max(count, 0)));
    if (!up) return;
    auto at = decimal.digits.size();
    while (at > 0 && decimal.digits[at - 1] == '9')
        --at;
    std::fill(decimal.digits.begin() + static_cast<std::ptrdiff_t>(at), decimal.digits.end(), '0');
    if (at > 0) {
        ++decimal.digits[at - 1];
    } else {
        decimal.digits.insert(0, 1, '1');
        ++decimal.exponent;
    }
}

/// The digit of weight 10^power.
char digitAt(const Decimal& decimal, int power)
{
    const int index = decimal.exponent - 1 - power;
    return index >= 0 && index < static_cast<int>(decimal.digits.size())
               ? decimal.digits[static_cast<std::size_t>(index)]
               : '0';
}

std::string fixed(Decimal decimal, std::string_view pattern)
{
    const auto point = pattern.find('.');
    const auto whole = pattern.substr(0, point);
    const int least = static_cast<int>(std::count(whole.begin(), whole.end(), '0'));
    const int decimals = point == std::string_view::npos ? 0 : static_cast<int>(pattern.size() - point - 1);
    roundDigits(decimal, decimal.exponent + decimals);

    std::string text(decimal.negative ? "-" : "");
    const int highest = decimal.digits.empty() ? 0 : decimal.exponent;
    for (int power = std::max(least, highest) - 1; power >= 0; --power) {
        text += digitAt(decimal, power);
    }
    if (decimals > 0) text += '.';
    for (int power = -1; power >= -decimals; --power) {
        text += digitAt(decimal, power);
    }
    return text;
}

std::string generalDecimal(Decimal decimal, int significant)
{
    roundDigits(decimal, significant);
    decimal.digits.erase(decimal.digits.find_last_not_of('0') + 1);
    if (decimal.digits.empty()) return "0";
    std::string text(decimal.negative ? "-" : "");
    const int decimals = std::max(0, static_cast<int>(decimal.digits.size()) - decimal.exponent);
    if (decimal.exponent > significant || decimal.exponent < -3) {
        const int power = decimal.exponent - 1;
        text += decimal.digits[0];
        if (decimal.digits.size() > 1) text += "." + decimal.digits.substr(1);
        return text + "E" + (power < 0 ? "-" : "+") + format(std::abs(power), "00");
    }
    decimal.negative = false;
    return text + fixed(decimal, "0." + std::string(static_cast<std::size_t>(decimals), '0'));
}

} // namespace

double Val(std::string_view text) { return leadingNumber(text).value; }

bool isNumber(std::string_view text)
{
    const auto end = leadingNumber(text).end;
    return end > 0 && skipBlanks(text, end) == text.size();
}

std::int16_t toInt16(double value)
{
    if (std::isnan(value)) return 0;
    // std::round() is off by one just below 0.5 in Windows' library
    auto rounded = std::trunc(value);
    if (std::fabs(value - rounded) >= 0.5) rounded += std::copysign(1, value);
    return static_cast<std::int16_t>(std::clamp(rounded, -32768.0, 32767.0));
}

std::int16_t integerOf(std::string_view text) { return toInt16(Val(text)); }

std::string format(double value, std::string_view pattern) { return fixed(shortestDecimal(value), pattern); }
std::string format(float value, std::string_view pattern) { return fixed(shortestDecimal(value), pattern); }
std::string format(int value, std::string_view pattern)
{
    return format(static_cast<double>(value), pattern);
}

std::string general(double value) { return generalDecimal(shortestDecimal(value), 15); }
std::string general(float value) { return generalDecimal(shortestDecimal(value), 7); }
std::string general(int value) { return std::to_string(value); }

int hexDigitValue(char digit)
{
    if (isDigit(digit)) return digit - '0';
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    return -1;
}

std::int32_t hexNumber(std::string_view text)
{
    if (text.empty() || text.size() > 7) return -1;
    std::int32_t number = 0;
    for (const char c : text) {
        const int value = hexDigitValue(c);
        if (value < 0) return -1;
        number = number * 16 + value;
    }
    return number;
}

bool allDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

} // namespace quorvel::text
