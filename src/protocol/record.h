#pragma once

#include "jet/value.h"
#include "link/transaction.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// One stored record.
///
/// The reply has 41 characters, 57 for the three-direction readout, counted from 1:
///
///     1  ":"   2-3 address   4-5 "24"   6-9 not looked at
///     10-11 year of the century   12-13 month   14-15 day   16-17 hour   18-19 minute   20-21 second
///     22-29 x   30-37 y   [38-45 z1   46-53 z2]   last 4 not looked at
namespace quorvel::protocol {

/// A reading in a record reply and the field of the table that takes it.
struct ReadingRow {
    std::string_view field;
    std::size_t inReply; ///< which field of the reply it is
};
inline constexpr ReadingRow kReadings[] = {{"x", 2}, {"y", 3}, {"z1", 4}, {"z2", 5}};
inline constexpr std::size_t kMostReadings = 4;

/// What the two kinds of readouts differ in.
struct RecordLayout {
    int replyLength;
    std::size_t readings; ///< how many of kReadings, from the first
};
inline constexpr RecordLayout kTwoDirections{41, 2};
inline constexpr RecordLayout kThreeDirections{57, 4};

constexpr const RecordLayout& layoutOf(bool threeDirection)
{
    return threeDirection ? kThreeDirections : kTwoDirections;
}

/// Asks the readout of these two address digits for the record in a slot of its ring.
/// @param slot  0 to 9999.
link::Transaction recordFetch(std::string_view addressDigits, int slot, const RecordLayout& layout);

/// One stored reading.
struct Record {
    jet::Date time;
    std::array<float, kMostReadings> readings{}; ///< mm, in the order of kReadings
};

/// A record, or what is wrong with the reply: "no valid date and time: \"241332235959\"".
struct RecordReply {
    std::optional<Record> record;
    std::string fault;
};

/// Reads a reply of the layout's length. The date must be one of the calendar, the time one of the day, each
/// reading one number that single precision can hold.
RecordReply readRecord(std::string_view reply, const RecordLayout& layout);

/// "Total 5 records. 3 records have been received."
std::string receivedText(int total, int received);

/// "3 records have been received, Comm Error"
std::string brokenText(int received);

/// The message when a reply cannot be stored.
/// @param index     of the record, as it was asked for.
/// @param received  records that are in the file.
std::string badRecordText(int index, const std::string& fault, std::string_view reply, int received);

} // namespace quorvel::protocol
