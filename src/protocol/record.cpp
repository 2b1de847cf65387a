#include "protocol/record.h"

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
constexpr int kLineEndWidth = 2;

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
    const double value = text::Val(field);
    if (std::abs(value) > static_cast<double>(std::numeric_limits<float>::max())) return std::nullopt;
    return static_cast<float>(value);
}

} // namespace

link::Transaction recordFetch(std::string_view addressDigits, int slot, const RecordLayout& layout)
{
    auto fetch = transaction(CommandId::FetchRecord, addressDigits, text::format(slot, "0000"));
    fetch.reply.count = layout.replyLength;
    return fetch;
}

RecordReply readRecord(std::string_view reply, const RecordLayout& layout)
{
    if (reply.size() != static_cast<std::size_t>(layout.replyLength)) return {{}, "not its full length"};
    Record record;
    const auto digits = field(CommandId::FetchRecord, kTimeField, reply);
    const auto time = timeOf(digits);
    if (!time) return {{}, "no valid date and time: " + quoted(digits)};
    record.time = *time;
    for (std::size_t i = 0; i < layout.readings; ++i) {
        const auto come = field(CommandId::FetchRecord, kReadings[i].inReply, reply);
        const auto reading = readingOf(come);
        if (!reading) return {{}, "no number for " + std::string(kReadings[i].field) + ": " + quoted(come)};
        record.readings[i] = *reading;
    }
    return {record, {}};
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

std::string badRecordText(int index, const std::string& fault, std::string_view reply, int received)
{
    if (reply.ends_with("\r\n")) reply.remove_suffix(kLineEndWidth);
    return "Record " + text::format(index, "0000") + " of the readout holds " + fault +
           ". Characters received: " + quoted(reply) + ". The download has stopped; the " +
           text::general(received) +
           " records before it are in the file. Check the instrument type and try again; the readout still "
           "has all its data.";
}

} // namespace quorvel::protocol
