#include "protocol/record.h"

#include "link/pacing.h"
#include "protocol/answer.h"
#include "protocol/command.h"
#include "text/number.h"
#include "text/reply.h"

#include <cmath>
#include <limits>

namespace quorvel::protocol {

namespace {

constexpr std::size_t kTimeField = 1;
constexpr int kTimeWidth = 12;
constexpr int kCentury = 2000;
constexpr int kSlotPosition = 6;
constexpr int kSlotWidth = 4;
constexpr int kEndWidth = 4;
constexpr std::string_view kEnd = "FF\r\n";

/// Leading characters that a reply repeats of the question, and what it is when they differ.
struct HeadPart {
    int position;
    int count;
    Misfit misfit;
};
constexpr HeadPart kHeadParts[] = {
    {1, 3, Misfit::Address}, {4, 2, Misfit::Command}, {kSlotPosition, kSlotWidth, Misfit::Slot}};

bool isSign(char character) { return character == '+' || character == '-'; }

/// "+012"
bool beginsNumber(std::string_view characters)
{
    return !characters.empty() && isSign(characters[0]) &&
           characters.find_first_not_of("0123456789.", 1) == std::string_view::npos;
}

std::string quoted(std::string_view received) { return '"' + printable(received) + '"'; }

/// "240229235959"
std::optional<jet::Date> timeOf(std::string_view digits)
{
    if (digits.size() != kTimeWidth || !text::allDigits(digits)) return std::nullopt;
    const auto pair = [digits](int position) { return text::integerOf(text::mid(digits, position, 2)); };
    return jet::Date::of({kCentury + pair(1), pair(3), pair(5), pair(7), pair(9), pair(11)});
}

/// A line end counts as a blank to the readers of numbers, but a reading that holds one has lost characters.
std::optional<float> readingOf(std::string_view field)
{
    if (!text::isNumber(field) || field.find_first_of("\r\n\t") != std::string_view::npos)
        return std::nullopt;
    return asReading(text::Val(field));
}

} // namespace

std::optional<float> asReading(double number)
{
    const bool fits = std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
    return fits ? std::optional(static_cast<float>(number)) : std::nullopt;
}

link::Transaction recordFetch(std::string_view addressDigits, int slot, const RecordLayout& layout)
{
    auto fetch = transaction(CommandId::FetchRecord, addressDigits, text::format(slot, "0000"));
    fetch.reply.count = layout.replyLength;
    return fetch;
}

link::Transaction recordFetchOfAnyLayout(std::string_view addressDigits, int slot)
{
    auto fetch = recordFetch(addressDigits, slot, kTwoDirections);
    fetch.reply = {.until = link::ReplyRule::Until::CountOrTime,
                   .count = kTwoDirections.replyLength,
                   .seconds = link::kCharacterTimeout,
                   .longest = kThreeDirections.replyLength};
    return fetch;
}

RecordReply readRecord(std::string_view reply, const RecordLayout& layout)
{
    RecordReply read;
    const auto digits = field(CommandId::FetchRecord, kTimeField, reply);
    read.record.time = timeOf(digits);
    if (!read.record.time) read.unreadable.push_back({kTimeName, std::string(digits)});
    for (std::size_t i = 0; i < layout.readings; ++i) {
        const auto come = field(CommandId::FetchRecord, kReadings[i].inReply, reply);
        read.record.readings[i] = readingOf(come);
        if (!read.record.readings[i]) read.unreadable.push_back({kReadings[i].field, std::string(come)});
    }
    return read;
}

std::string unreadableText(const Unreadable& field)
{
    const auto what = field.field == kTimeName ? std::string("no valid date and time: ")
                                               : "no number for " + std::string(field.field) + ": ";
    return what + quoted(std::string_view(field.characters));
}

std::vector<Misfit> misfitsOf(std::string_view frame, std::string_view reply, const RecordLayout& layout)
{
    std::vector<Misfit> found;
    for (const auto& part : kHeadParts) {
        if (text::mid(frame, part.position, part.count) != text::mid(reply, part.position, part.count))
            found.push_back(part.misfit);
    }
    const auto end = text::mid(reply, layout.replyLength - kEndWidth + 1, kEndWidth);
    if (end == kEnd) return found;
    const bool goesOn = layout == kTwoDirections && found.empty() && beginsNumber(end);
    found.push_back(goesOn ? Misfit::HasZ : Misfit::EndMark);
    return found;
}

std::string misfitText(Misfit misfit, std::string_view reply)
{
    const auto part = [reply](int position, int count) {
        return printable(text::mid(reply, position, count));
    };
    switch (misfit) {
    case Misfit::Address:
        return "it is of the readout at " + part(2, 2);
    case Misfit::Command:
        return "it answers the command " + part(4, 2);
    case Misfit::Slot:
        return "it is of slot " + part(kSlotPosition, kSlotWidth);
    case Misfit::EndMark:
        return "it has no end mark";
    case Misfit::HasZ:
        return "Z follows, so the readout is of type C";
    }
    return {};
}

std::optional<RecordLayout> layoutOfReply(std::string_view reply)
{
    for (const auto& layout : {kTwoDirections, kThreeDirections}) {
        if (static_cast<int>(reply.size()) == layout.replyLength && reply.ends_with(kEnd)) return layout;
    }
    return std::nullopt;
}

std::string receivedText(int total, int received)
{
    return "Total " + text::general(total) + " records. " + text::general(received) +
           " records have been received.";
}

std::string brokenText(int received)
{
    return text::general(received) + " records have been received, Comm Error";
}

} // namespace quorvel::protocol
