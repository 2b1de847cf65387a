#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The few text forms of the bus, as a readout writes and reads them. All are fixed in width.
namespace quorvelsim {

/// 0..255 as two upper-case hexadecimal digits; only the low byte counts.
std::string twoHex(int value);

/// 0..9999 as at least `width` decimal digits with leading zeros.
std::string digits(int value, int width);

/// The number that a text of decimal digits stands for; nothing when it is empty, longer than 9 digits or
/// holds anything else.
std::optional<int> decimal(std::string_view text);

/// The byte that two hexadecimal digits of either case stand for; nothing for any other text.
std::optional<int> hexByte(std::string_view text);

/// Millimetres as a reading: a sign and seven places, decimals by magnitude ("+1.50000", "-12.5000",
/// "+123.400"). Always 8 characters: values beyond +-999.999 are held there; a rounded zero is "+0.00000".
std::string readingField(double millimetres);

/// Millimetres as a stored record has them: "+012.345". 8 characters, held at +-999.999.
std::string recordField(double millimetres);

/// A sign, digits and at most one point, nothing else; at least one digit.
std::optional<double> signedNumber(std::string_view text);

/// Characters of `text` from 1-based `position` on; what there is when the text is shorter.
std::string_view mid(std::string_view text, std::size_t position, std::size_t count = std::string_view::npos);

/// True for characters that may stand in a frame: printable ASCII but ":".
bool isFrameCharacter(char character);

/// The words of a line, split at blanks.
std::string_view nextWord(std::string_view& line);

} // namespace quorvelsim
