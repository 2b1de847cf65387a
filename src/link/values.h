#pragma once

#include "link/address.h"

#include <string>
#include <string_view>

/// The talk of reading measured values.
///
/// A value reply has 29 characters, counted from 1:
///
///     1  ":"   2-3 address   4-7 command   8-15 first value   16-23 second value   24-29 not looked at
///
/// The first and second value are X and Y ("2101"), or Z1 and Z2 ("2102"), eight characters each, shown as received.
namespace quorvel::link {

inline constexpr std::string_view kReadXY = "2101FF";
inline constexpr std::string_view kReadZ = "2102FF";

inline constexpr int kValuesReplyLength = 29;
inline constexpr float kValuesTimeout = 1.5F;    ///< s, for the whole reply
inline constexpr float kPauseBeforeZ = 0.2F;     ///< s, between the X/Y and the Z exchange
inline constexpr float kPauseAfterValues = 0.1F; ///< s, at the end of every reading
inline constexpr std::string_view kReadingFailed = " CommError";

/// The frame that asks the readout of these two address digits; `command` is kReadXY or kReadZ.
std::string valuesFrame(std::string_view addressDigits, std::string_view command);

/// True when the reply has the one length that counts as answered.
bool isValuesReply(std::string_view reply);

/// The first and the second value of a reply as received; shorter or empty when the reply is.
std::string firstValue(std::string_view reply);
std::string secondValue(std::string_view reply);

/// "  X: " first "  Y: " second "  ", or kReadingFailed for a reply of another length.
std::string xyText(std::string_view reply);

/// What a Z reply adds to the line, whatever its length: one value for the user edition, Z1 and Z2 otherwise.
std::string zText(std::string_view reply, bool userEdition);

} // namespace quorvel::link
