#pragma once

#include "link/bench.h"
#include "settings/exchange.h"

#include <string>
#include <string_view>

/// The talk of the offsets, one per direction. A set command and the answer to a query carry the same value of
/// eight characters, a sign and seven places, behind the command digits.
namespace quorvel::settings {

/// What differs between the directions.
struct Direction {
    char name;
    std::string_view setCode;      ///< command digits before the value
    std::string_view queryCommand; ///< the whole command
    int replyLength;
    int echoLength;                ///< up to the end of the value
    int valuePosition;             ///< of the value in a reply
    std::string_view negativeMark; ///< begins the formats of values below zero
    std::string_view queryText;    ///< what a query shows before the value
};

/// X speaks of the reference also where offsets are meant.
inline constexpr Direction kDirections[] = {
    {'X', "71", "72FF", 17, 13, 6, "#", "The reference of X-Direction is "},
    {'Y', "73", "74FF", 17, 13, 6, "", "The offset of Y-Direction is "},
    {'Z', "7805", "7806FF", 19, 15, 8, "", "The offset of Z-Direction is "},
};
/// Places in kDirections, where a number is needed rather than a row.
enum DirectionRow { kXRow, kYRow, kZRow };
inline constexpr const Direction& kX = kDirections[kXRow];
inline constexpr const Direction& kY = kDirections[kYRow];
inline constexpr const Direction& kZ = kDirections[kZRow];

/// Y is missing at TypeD; Z is there at TypeC alone.
bool hasDirection(link::InstrumentType type, const Direction& direction);

/// The same as conditions for the rows of a table: what every type has, what needs a Y row, what needs a Z row.
inline bool always(link::InstrumentType /*type*/) { return true; }
inline bool hasY(link::InstrumentType type) { return hasDirection(type, kY); }
inline bool hasZ(link::InstrumentType type) { return hasDirection(type, kZ); }

/// `value` as a sign and seven places, eight characters for every value between -1000 and 1000:
/// five decimals below 10, four below 100, three above. A value that would round up to 10 or 100 takes the
/// decimals of the next range, and one that would round up to 1000 is written as 999.999. From 1000 on the
/// text is longer.
std::string signedValue(const Direction& direction, double value);

inline constexpr int kValueLength = 8;
inline constexpr auto kOffsetTooLong =
    "The frame is longer than the readout expects: values between -1000 and 1000 fit.";

/// True for a sign and seven places, digits and at most one point: what a readout holds as an offset.
bool isSignedValue(std::string_view text);

/// Sets the offset to a value that signedValue() wrote.
Exchange offsetSet(const Direction& direction, std::string_view addressDigits, std::string_view value);
Exchange offsetQuery(const Direction& direction, std::string_view addressDigits);

/// The value in the answer to a query, as received.
std::string offsetOf(const Direction& direction, std::string_view reply);

/// The line that a query shows of that value.
std::string offsetText(const Direction& direction, std::string_view value);

} // namespace quorvel::settings
