#pragma once

#include "jet/value.h"
#include "link/transaction.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
/// The field of the table that takes date and time.
inline constexpr std::string_view kTimeName = "time";

/// What the two kinds of readouts differ in.
struct RecordLayout {
    int replyLength;
    std::size_t readings; ///< how many of kReadings, from the first

    bool operator==(const RecordLayout&) const = default;
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
/// The same of a readout whose layout is not known: the reply has the length of either.
link::Transaction recordFetchOfAnyLayout(std::string_view addressDigits, int slot);

/// One stored reading. A field that the reply did not hold in readable form is missing.
struct Record {
    std::optional<jet::Date> time;
    std::array<std::optional<float>, kMostReadings> readings{}; ///< mm, in the order of kReadings

    bool operator==(const Record&) const = default;
};

/// A number as records hold it; nothing when single precision cannot hold it, or it is none.
std::optional<float> asReading(double number);

/// A field of a reply that could not be read.
struct Unreadable {
    std::string_view field; ///< "time", or the name of a reading
    std::string characters; ///< as received
};

/// What a reply holds.
struct RecordReply {
    Record record;
    std::vector<Unreadable> unreadable; ///< in the order of the reply
};

/// Reads a reply, of any length. The date must be one of the calendar, the time one of the day, each reading one number
/// that single precision can hold; what is not so is listed.
RecordReply readRecord(std::string_view reply, const RecordLayout& layout);

/// "no valid date and time: \"241332235959\"", "no number for x: \"XYZABCDE\"".
std::string unreadableText(const Unreadable& field);

/// In what a reply of the layout's length differs from an answer to the question.
enum class Misfit {
    Address, ///< it is of another readout
    Command, ///< it answers another command
    Slot,    ///< it is of another slot
    EndMark, ///< it does not end with "FF" and the line end
    HasZ,    ///< Z follows where a reply of two directions ends: the readout has three
};

/// The differences of a reply, in the order of the enumeration. HasZ stands in place of EndMark.
/// @param frame  as sent: ":AA24nnnnFF" and the line end.
std::vector<Misfit> misfitsOf(std::string_view frame, std::string_view reply, const RecordLayout& layout);

/// "it is of slot 0013", "it is of the readout at 07" ..., as the end of a sentence.
std::string misfitText(Misfit misfit, std::string_view reply);

/// The layout of a whole reply by its length and its end; nothing when it is neither.
std::optional<RecordLayout> layoutOfReply(std::string_view reply);

/// "Total 5 records. 3 records have been received."
std::string receivedText(int total, int received);

/// "3 records have been received, Comm Error"
std::string brokenText(int received);

} // namespace quorvel::protocol
