#pragma once

#include <string>
#include <string_view>

/// Bus addresses as text. An address is 1..249 in the windows (decimal) and two upper-case hexadecimal digits in
/// frames; "FF" addresses every readout on the bus.
namespace quorvel::link {

inline constexpr int kLowestAddress = 1;
inline constexpr int kHighestAddress = 249;

/// True for the addresses that a readout can have.
constexpr bool isAddress(int number) { return number >= kLowestAddress && number <= kHighestAddress; }

/// The address that `text` begins with, decimal; 0 when that is none that a readout can have.
int addressIn(std::string_view text);

/// The number that `text` begins with, rounded to 16 bits, as hexadecimal digits: upper case, no leading zero,
/// the last two only when there are more, so "256" gives "00". A negative number is written in 16-bit two's
/// complement first, so "-1" gives "FF".
std::string DecToHex(std::string_view text);

/// DecToHex() in at least two digits: "5" gives "05", "249" gives "F9", a text without a number "00".
std::string AddressToHex(std::string_view text);
std::string AddressToHex(int address);

/// The decimal number that up to 7 hexadecimal digits mean; lower case counts as upper case, any other
/// character as 0. Characters after the seventh are not looked at.
std::string HexToDec(std::string_view text);

/// HexToDec() in at least two digits: "0A" gives "10", "05" gives "05", "G1" gives "01".
std::string HexToAddress(std::string_view text);

} // namespace quorvel::link
