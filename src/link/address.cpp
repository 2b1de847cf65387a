#include "link/address.h"

#include "text/number.h"

#include <algorithm>
#include <cstdint>

namespace quorvel::link {

namespace {

std::string inTwoDigits(const std::string& digits) { return digits.size() == 1 ? "0" + digits : digits; }

} // namespace

int addressIn(std::string_view text)
{
    const int number = text::integerOf(text);
    return isAddress(number) ? number : 0;
}

std::string DecToHex(std::string_view text)
{
    auto rest = static_cast<std::uint16_t>(text::integerOf(text));
    std::string digits;
    do {
        digits.insert(digits.begin(), "0123456789ABCDEF"[rest % 16]);
        rest /= 16;
    } while (rest > 0);
    return digits.size() > 2 ? digits.substr(digits.size() - 2) : digits;
}

std::string AddressToHex(std::string_view text) { return inTwoDigits(DecToHex(text)); }
std::string AddressToHex(int address) { return AddressToHex(std::to_string(address)); }

std::string HexToDec(std::string_view text)
{
    int number = 0;
    for (const char c : text.substr(0, 7)) {
        number = number * 16 + std::max(0, text::hexDigitValue(c));
    }
    return std::to_string(number);
}

std::string HexToAddress(std::string_view text) { return inTwoDigits(HexToDec(text)); }

} // namespace quorvel::link
