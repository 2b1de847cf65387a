#include "autoread/record.h"

#include "text/number.h"
#include "text/reply.h"

#include <cmath>
#include <limits>

namespace quorvel::autoread {

namespace {

constexpr int kTimeAt = 10;
constexpr int kTimeWidth = 12;
constexpr int kReadingWidth = 8;
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

RecordReply readRecord(std::string_view reply, const RecordLayout& layout)
{
    if (reply.size() != static_cast<std::size_t>(layout.replyLength)) return {{}, "not its full length"};
    Record record;
    const auto digits = text::mid(reply, kTimeAt, kTimeWidth);
    const auto time = timeOf(digits);
    if (!time) return {{}, "no valid date and time: " + quoted(digits)};
    record.time = *time;
    for (std::size_t i = 0; i < layout.readings; ++i) {
        const auto field = text::mid(reply, kReadings[i].position, kReadingWidth);
        const auto reading = readingOf(field);
        if (!reading) return {{}, "no number for " + std::string(kReadings[i].field) + ": " + quoted(field)};
        record.readings[i] = *reading;
    }
    return {record, {}};
}

std::string printable(std::string_view received)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char character : received) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte < 0x7F) {
            text += character;
        } else {
            text.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
        }
    }
    return text;
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

} // namespace quorvel::autoread
