#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Numbers as text and back. Every rule of reading, rounding and writing numbers that the bus and the windows
/// depend on is here, once. Nothing here depends on the locale: the decimal point is always ".".
///
/// One rounding rule serves all: the decimal digits of the number as written (the shortest digits that give
/// the same binary number back), halves away from zero. So 1.25 as "0.0" is "1.3", 12.5 as "00" is "13" and
/// -0.5 as a whole number is -1.
namespace quorvel::text {

/// The number that a text begins with: blanks, tabs and line ends (also between sign and digits), a sign,
/// digits with at most one ".", an exponent ("e" or "E" and a signed whole number). What follows the number
/// does not matter, so "12 34" is 12 and "1E" is 1.
///
/// @return the number, 0 when the text does not begin with one. Never infinite: a number beyond the range of
///         double gives the largest finite number of that sign; one too small for it gives 0.
double Val(std::string_view text);

/// True when `text` is nothing but one number as Val() reads it, blanks before and after allowed. For entries
/// that are refused rather than read as 0.
bool isNumber(std::string_view text);

/// Rounds to a 16-bit integer; values outside -32768..32767 become the nearest of these two.
std::int16_t toInt16(double value);

/// Val() rounded by toInt16(): how address boxes and decimal reply fields are read.
std::int16_t integerOf(std::string_view text);

/// Writes `value` in a fixed format such as "0.00000", "00.0000", "000.000", "#0.000", "0.0" or "00": each "0"
/// before the point is a digit that is always written, "#" one that is written when needed, each "0" after the
/// point a decimal. Longer whole parts are written in full. A negative value gets a leading "-", also when only
/// zeros are left of it: fields of fixed width count on the sign. A value that is not finite is written as 0.
/// The float overload rounds the digits that single precision has; use it for values held in single precision.
std::string format(double value, std::string_view pattern);
std::string format(float value, std::string_view pattern);
std::string format(int value, std::string_view pattern);

/// General number format: as few digits as the number needs, at most 15 (double) or 7 (float) significant
/// ones, no leading blank, "0.5" with its zero, exponents as "1E-05" and "1E+15" below 0.0001 and from 10^15
/// (10^7 for float) on. A value that is not finite is "0".
std::string general(double value);
std::string general(float value);
std::string general(int value);

/// The value of one hexadecimal digit of either case, -1 for any other character.
int hexDigitValue(char digit);

/// The number that a text of 1 to 7 hexadecimal digits means.
/// @return -1 when the text is empty, longer than 7 digits or holds anything else.
std::int32_t hexNumber(std::string_view text);

/// True when the text is not empty and all of it decimal digits.
bool allDigits(std::string_view text);

} // namespace quorvel::text
