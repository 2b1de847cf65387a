#include "protocol/shape.h"

#include "protocol/answer.h"
#include "protocol/measurement.h"
#include "protocol/readout_clock.h"
#include "text/number.h"
#include "text/reply.h"

#include <algorithm>

namespace quorvel::protocol {

namespace {

constexpr std::string_view kEndOfLine = "\r\n";
constexpr std::string_view kEndOfReply = "FF\r\n";
constexpr auto kNowhere = std::string_view::npos;
constexpr int kReadoutAt = 2;
constexpr int kReadoutWidth = 2;
constexpr int kMostAround = 32; // characters before and behind a reply that are taken with it

/// The query whose reply is looked at.
struct Asked {
    const Command& row;
    std::string_view addressDigits;
    std::string head; ///< that every reply begins with
};

bool isReading(const Command& row) { return row.id == CommandId::ReadXY || row.id == CommandId::ReadZ; }

bool isBrief(const Command& row, std::string_view reply)
{
    return isReading(row) && reply.size() == kShortMeasurement;
}

bool isWhole(const Command& row, std::string_view reply)
{
    const bool fits = reply.size() == static_cast<std::size_t>(row.reply.count) || isBrief(row, reply);
    return fits && reply.ends_with(kEndOfReply);
}

bool isPlain(std::string_view reply)
{
    return std::all_of(reply.begin(), reply.end(),
                       [](char c) { return (c >= ' ' && c < '\x7F') || kEndOfLine.find(c) != kNowhere; });
}

bool holdsValues(const Command& row, std::string_view reply)
{
    if (isReading(row))
        return text::isNumber(field(row.id, 0, reply)) && text::isNumber(field(row.id, 1, reply));
    if (row.id == CommandId::QueryFeature) return flagIn(field(row.id, 0, reply)).has_value();
    if (row.id == CommandId::QueryClock) return clockOf(reply).has_value();
    return true;
}

/// Of a reply that begins with the head.
Shape shapeBehindHead(const Asked& asked, std::string_view reply)
{
    if (!isPlain(reply)) return Shape::Garbled;
    if (isWhole(asked.row, reply)) {
        if (!holdsValues(asked.row, reply)) return Shape::BadValue;
        return isBrief(asked.row, reply) ? Shape::Brief : Shape::Good;
    }
    const auto end = reply.find(kEndOfLine);
    if (end != kNowhere)
        return isWhole(asked.row, reply.substr(0, end + kEndOfLine.size())) ? Shape::Long : Shape::Garbled;
    return reply.size() < static_cast<std::size_t>(asked.row.reply.count) ? Shape::Short : Shape::Garbled;
}

/// Of a reply that does not hold the head.
Shape shapeWithoutHead(const Asked& asked, std::string_view reply)
{
    if (asked.head.starts_with(reply)) return Shape::Short;
    if (!reply.starts_with(':') || !isWhole(asked.row, reply) || !isPlain(reply)) return Shape::Garbled;
    const auto address = text::mid(reply, kReadoutAt, kReadoutWidth);
    if (address == asked.addressDigits) return Shape::OtherCommand;
    const bool sameCommand = reply.substr(kReadoutAt + 1).starts_with(asked.row.digits);
    return text::hexNumber(address) >= 0 && sameCommand ? Shape::OtherReadout : Shape::Garbled;
}

} // namespace

Shape shapeOf(CommandId id, std::string_view addressDigits, std::string_view reply)
{
    Asked asked{command(id), addressDigits, ":"};
    asked.head.append(addressDigits).append(asked.row.digits);
    if (reply.empty()) return Shape::Silent;
    const auto first = reply.find(asked.head);
    if (first == kNowhere) return shapeWithoutHead(asked, reply);
    if (reply.find(asked.head, first + 1) != kNowhere) return Shape::Twice;
    if (first == 0) return shapeBehindHead(asked, reply);
    return shapeBehindHead(asked, reply.substr(first)) == Shape::Good ? Shape::NoiseBefore : Shape::Garbled;
}

std::string_view withoutEcho(std::string_view frame, std::string_view reply)
{
    return !frame.empty() && reply.starts_with(frame) ? reply.substr(frame.size()) : reply;
}

link::Transaction probe(CommandId id, std::string_view addressDigits, float seconds)
{
    auto query = transaction(id, addressDigits);
    const int count = command(id).reply.count;
    query.reply = {.until = link::ReplyRule::Until::CountOrTime,
                   .count = count,
                   .seconds = seconds,
                   .longest = 2 * count + kMostAround};
    query.drains = true;
    return query;
}

} // namespace quorvel::protocol
