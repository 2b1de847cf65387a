#pragma once

#include "link/transaction.h"
#include "protocol/command.h"
#include "protocol/direction.h"

#include <string>
#include <string_view>

/// The offsets, one per direction. A set command and the answer to a query carry the same value of eight characters, a
/// sign and seven places, behind the command digits.
namespace quorvel::protocol {

/// What differs between the directions.
struct OffsetRow {
    Direction direction;
    CommandId set;
    CommandId query;
    std::string_view negativeMark; ///< begins the formats of values below zero
    std::string_view queryText;    ///< what a query shows before the value
};

/// X speaks of the reference also where offsets are meant.
inline constexpr OffsetRow kOffsets[] = {
    {Direction::X, CommandId::SetOffsetX, CommandId::QueryOffsetX, "#", "The reference of X-Direction is "},
    {Direction::Y, CommandId::SetOffsetY, CommandId::QueryOffsetY, "", "The offset of Y-Direction is "},
    {Direction::Z, CommandId::SetOffsetZ, CommandId::QueryOffsetZ, "", "The offset of Z-Direction is "},
};
/// Places in kOffsets, where a number is needed rather than a row.
enum OffsetNumber { kXRow, kYRow, kZRow };
inline constexpr const OffsetRow& kX = kOffsets[kXRow];
inline constexpr const OffsetRow& kY = kOffsets[kYRow];
inline constexpr const OffsetRow& kZ = kOffsets[kZRow];

/// `value` as a sign and seven places, eight characters for every value between -1000 and 1000:
/// five decimals below 10, four below 100, three above. A value that would round up to 10 or 100 takes the
/// decimals of the next range, and one that would round up to 1000 is written as 999.999. From 1000 on the
/// text is longer.
std::string signedValue(const OffsetRow& row, double value);

inline constexpr int kValueLength = 8;
inline constexpr auto kOffsetTooLong =
    "The frame is longer than the readout expects: values between -1000 and 1000 fit.";

/// True for a sign and seven places, digits and at most one point: what a readout holds as an offset.
bool isSignedValue(std::string_view text);

/// Sets the offset to a value that signedValue() wrote.
link::Transaction offsetSet(const OffsetRow& row, std::string_view addressDigits, std::string_view value);
link::Transaction offsetQuery(const OffsetRow& row, std::string_view addressDigits);

/// The value in the answer to a query, as received.
std::string offsetOf(const OffsetRow& row, std::string_view reply);

/// The line that a query shows of that value.
std::string offsetText(const OffsetRow& row, std::string_view value);

} // namespace quorvel::protocol
