#include "protocol/command.h"

#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <limits>

namespace quorvel::protocol {

namespace {

using Id = CommandId;
using link::Kind;
using link::ReplyRule;
using Until = ReplyRule::Until;

constexpr auto kEndMark = "FF";
constexpr int kDigitsPosition = 4; // of the command digits

// What the readouts leave to the client: how long to wait where a reply is taken whole.
constexpr float kSearchTime = 2.55F;      // s, within which all readouts answer
constexpr float kAddressTime = 0.25F;     // s
constexpr float kReadingTime = 1.5F;      // s
constexpr float kCalibrationTime = 10.0F; // s

constexpr Field kNewAddressFields[] = {{"new address", 6, 2}};
constexpr Field kDateTimeFields[] = {{"date", 6, 6}, {"time", 12, 6}};
constexpr Field kIntervalFields[] = {{"interval", 8, 8}};
constexpr Field kModeFields[] = {{"mode", 6, 2}, {"A", 8, 2}, {"B", 10, 2}, {"C", 12, 2}, {"D", 14, 2}};
constexpr Field kXYFields[] = {{"X", 8, 8}, {"Y", 16, 8}};
constexpr Field kZFields[] = {{"Z1", 8, 8}, {"Z2", 16, 8}};
constexpr Field kPointersFields[] = {{"capacity", 6, 4}, {"first", 10, 4}, {"next", 14, 4}};
constexpr Field kRecordFields[] = {
    {"slot", 6, 4}, {"date and time", 10, 12}, {"X", 22, 8}, {"Y", 30, 8}, {"Z1", 38, 8}, {"Z2", 46, 8}};
constexpr Field kPointsFields[] = {{"points", 8, 176}};
constexpr Field kPointsZFields[] = {{"points", 10, 176}};
constexpr Field kPixelsFields[] = {{"count", 6, 4}, {"pixels", 10, 0}};
constexpr Field kPixelsZFields[] = {{"count", 8, 4}, {"pixels", 12, 0}};
constexpr Field kWireFields[] = {{"diameter", 6, 2}, {"permitted error", 8, 2}, {"self-calibration", 10, 2}};
constexpr Field kOffsetFields[] = {{"offset", 6, 8}};
constexpr Field kOffsetZFields[] = {{"offset", 8, 8}};
constexpr Field kFeatureFields[] = {{"state", 6, 2}};
constexpr Field kSwitchFields[] = {{"state", 8, 2}};
constexpr Field kLocationFields[] = {{"location", 8, 4}};

constexpr ReplyRule characters(int count) { return {.until = Until::Count, .count = count}; }
constexpr ReplyRule line(int withoutPixels) { return {.until = Until::LineFeed, .count = withoutPixels}; }
constexpr ReplyRule whole(int count, float seconds)
{
    return {.until = Until::CountOrTime, .count = count, .seconds = seconds};
}
constexpr ReplyRule after(float seconds, int count)
{
    return {.until = Until::Time, .count = count, .seconds = seconds};
}

// The windows of the wire and of the clock do not look at the command digits of a reply: its head ends before them.
constexpr int kAddressOnly = 3;
constexpr bool kKeep = false; // what waits in the input buffer
constexpr bool kDrain = true;

constexpr Command kCommands[] = {
    {Id::Search, "01", Kind::Search, "Search the bus", {}, after(kSearchTime, 0), kKeep, 0, 1},
    {Id::ChangeAddress, "02", Kind::Set, "Change the address", kNewAddressFields, after(kAddressTime, 11),
     kKeep, 7},
    {Id::SetClock, "03", Kind::Set, "Set the clock", kDateTimeFields, characters(21), kKeep, 0, kAddressOnly},
    {Id::QueryClock, "04", Kind::Query, "Read the clock", kDateTimeFields, characters(21), kKeep, 0,
     kAddressOnly},
    {Id::SetInterval, "0501", Kind::Set, "Set the reading interval", kIntervalFields, characters(19)},
    {Id::QueryMode, "06", Kind::Query, "Read the automatic-reading mode", kModeFields, characters(19)},
    {Id::ReadXY, "2101", Kind::Query, "Read X and Y", kXYFields, whole(29, kReadingTime)},
    {Id::ReadZ, "2102", Kind::Query, "Read Z1 and Z2", kZFields, whole(29, kReadingTime)},
    {Id::QueryPointers, "22", Kind::Query, "Count the stored records", kPointersFields, characters(21)},
    {Id::FetchRecord, "24", Kind::Query, "Fetch a stored record", kRecordFields, characters(41)},
    {Id::DeleteRecords, "25", Kind::Delete, "Delete the stored records", {}, characters(9)},
    {Id::CalibrateX, "6111", Kind::Set, "Send the calibration of X", kPointsFields,
     whole(187, kCalibrationTime)},
    {Id::CalibrateY, "6311", Kind::Set, "Send the calibration of Y", kPointsFields,
     whole(187, kCalibrationTime)},
    {Id::CalibrateZ1, "780111", Kind::Set, "Send the calibration of Z1", kPointsZFields,
     whole(189, kCalibrationTime)},
    {Id::CalibrateZ2, "781111", Kind::Set, "Send the calibration of Z2", kPointsZFields,
     whole(189, kCalibrationTime)},
    {Id::GrayscaleX, "65", Kind::Query, "Read the pixels of X", kPixelsFields, line(13)},
    {Id::GrayscaleY, "66", Kind::Query, "Read the pixels of Y", kPixelsFields, line(13)},
    {Id::GrayscaleZ1, "7803", Kind::Query, "Read the pixels of Z1", kPixelsZFields, line(15)},
    {Id::GrayscaleZ2, "7804", Kind::Query, "Read the pixels of Z2", kPixelsZFields, line(15)},
    {Id::SetWire, "67", Kind::Set, "Set the wire parameters", kWireFields, characters(19), kKeep, 0,
     kAddressOnly},
    {Id::QueryWire, "68", Kind::Query, "Read the wire parameters", kWireFields, characters(19), kKeep, 0,
     kAddressOnly},
    {Id::SetOffsetX, "71", Kind::Set, "Set the offset of X", kOffsetFields, characters(17), kDrain, 13},
    {Id::SetOffsetY, "73", Kind::Set, "Set the offset of Y", kOffsetFields, characters(17), kDrain, 13},
    {Id::SetOffsetZ, "7805", Kind::Set, "Set the offset of Z", kOffsetZFields, characters(19), kDrain, 15},
    {Id::QueryOffsetX, "72", Kind::Query, "Read the offset of X", kOffsetFields, characters(17)},
    {Id::QueryOffsetY, "74", Kind::Query, "Read the offset of Y", kOffsetFields, characters(17)},
    {Id::QueryOffsetZ, "7806", Kind::Query, "Read the offset of Z", kOffsetZFields, characters(19)},
    {Id::SetFeature, "75", Kind::Set, "Switch the reference feature", kFeatureFields, characters(11), kKeep,
     7, 5, true},
    {Id::QueryFeature, "76", Kind::Query, "Read the reference feature", kFeatureFields, characters(11),
     kKeep},
    {Id::SetSwap, "7701", Kind::Set, "Switch the exchange of X and Y", kSwitchFields, characters(13), kDrain,
     9},
    {Id::SetInvertX, "7703", Kind::Set, "Switch the inversion of X", kSwitchFields, characters(13), kDrain,
     9},
    {Id::SetInvertY, "7705", Kind::Set, "Switch the inversion of Y", kSwitchFields, characters(13), kDrain,
     9},
    {Id::SetInvertZ, "7707", Kind::Set, "Switch the inversion of Z", kSwitchFields, characters(13), kDrain,
     9},
    {Id::QuerySwap, "7702", Kind::Query, "Read the exchange of X and Y", kSwitchFields, characters(13)},
    {Id::QueryInvertX, "7704", Kind::Query, "Read the inversion of X", kSwitchFields, characters(13)},
    {Id::QueryInvertY, "7706", Kind::Query, "Read the inversion of Y", kSwitchFields, characters(13)},
    {Id::QueryInvertZ, "7708", Kind::Query, "Read the inversion of Z", kSwitchFields, characters(13)},
    {Id::SetStitching, "7821", Kind::Set, "Set the stitching location", kLocationFields, characters(15),
     kDrain, 11},
    {Id::QueryStitching, "7822", Kind::Query, "Read the stitching location", kLocationFields, characters(15)},
};

constexpr bool inOrder()
{
    for (std::size_t i = 0; i < std::size(kCommands); ++i) {
        if (static_cast<std::size_t>(kCommands[i].id) != i) return false;
    }
    return std::size(kCommands) == static_cast<std::size_t>(Id::QueryStitching) + 1;
}
static_assert(inOrder(), "each command has one row, in the order of CommandId");

} // namespace

const Command& command(CommandId id) { return kCommands[static_cast<std::size_t>(id)]; }

std::span<const Command> commands() { return kCommands; }

std::string_view field(CommandId id, std::size_t index, std::string_view reply)
{
    const auto& wanted = command(id).fields[index];
    const int length = wanted.length > 0 ? wanted.length : std::numeric_limits<int>::max();
    return text::mid(reply, wanted.position, length);
}

bool holdsDigitsOnly(CommandId id, std::string_view reply)
{
    const auto& row = command(id);
    return reply.size() == static_cast<std::size_t>(row.reply.count) && reply.front() == ':' &&
           text::mid(reply, kDigitsPosition, static_cast<int>(row.digits.size())) == row.digits &&
           std::all_of(row.fields.begin(), row.fields.end(), [reply](const Field& part) {
               return text::allDigits(text::mid(reply, part.position, part.length));
           });
}

link::Transaction transaction(CommandId id, std::string_view addressDigits, std::string_view parameter)
{
    const auto& row = command(id);
    std::string frame = ":";
    frame.append(addressDigits).append(row.digits).append(parameter).append(kEndMark);
    return {.frame = text::withLineEnd(frame),
            .kind = row.kind,
            .reply = row.reply,
            .drains = row.drains,
            .head = row.head,
            .echoLength = row.echoLength,
            .ignoresBlanks = row.ignoresBlanks};
}

link::Transaction listening(float seconds)
{
    return {.frame = {}, .reply = {.until = Until::Time, .seconds = seconds}, .drains = false, .head = 0};
}

} // namespace quorvel::protocol
