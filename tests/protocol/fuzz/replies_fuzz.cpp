#include "protocol/answer.h"
#include "protocol/calibration_table.h"
#include "protocol/change_address.h"
#include "protocol/command.h"
#include "protocol/feature.h"
#include "protocol/grayscale.h"
#include "protocol/meaning.h"
#include "protocol/measurement.h"
#include "protocol/offset.h"
#include "protocol/readout_clock.h"
#include "protocol/record.h"
#include "protocol/ring.h"
#include "protocol/schedule.h"
#include "protocol/search.h"
#include "protocol/snapshot.h"
#include "protocol/stitching.h"
#include "protocol/switches.h"
#include "protocol/values.h"
#include "protocol/wire.h"
#include "support/fuzz_input.h"
#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <cmath>

/// Gives every reader of the protocol replies that a bus may bring, and checks what the headers promise.
///
/// First byte: the command, a place in the table of commands. Second byte: how the rest becomes a reply, see
/// replyOf().
namespace quorvel::protocol {
namespace {

using test::promised;

constexpr std::string_view kAddress = "05";
constexpr std::string_view kEnd = "FF\r\n";

/// 0: the bytes as they are; 1: behind the head of a good reply, in front of the end mark; 2: the same, brought to the
/// length of a good reply.
std::string replyOf(const Command& row, std::uint8_t form, std::string rest)
{
    if (form % 3 == 0) return rest;
    auto reply = ":" + std::string(kAddress).append(row.digits);
    const auto wanted = static_cast<std::size_t>(row.reply.count);
    const auto around = reply.size() + kEnd.size();
    if (form % 3 == 2 && row.reply.until != link::ReplyRule::Until::LineFeed)
        rest.resize(wanted > around ? wanted - around : 0, '0');
    return reply.append(rest).append(kEnd);
}

bool isPrintable(char character) { return character >= ' ' && character <= '~'; }

void holdNumbers(const std::string& reply)
{
    const double value = text::Val(reply);
    promised(std::isfinite(value), "a number is finite");
    promised(!text::allDigits(reply) || text::isNumber(reply), "digits are a number");
    promised(text::isNumber(text::general(value)), "what is written can be read");
    const auto rounded = text::toInt16(value);
    promised(rounded == text::integerOf(reply), "integers are rounded in one way");
    for (const auto* pattern : {"0.00000", "00.0000", "000.000", "#0.000", "0.0", "00"})
        promised(text::isNumber(text::format(value, pattern)), "what is formatted can be read");
}

/// What people and files are told, whatever has come.
void holdWords(const link::Exchange& exchange)
{
    const auto& reply = exchange.reply;
    const auto line = inOneLine(reply);
    promised(std::ranges::none_of(line, [](unsigned char c) { return c < ' ' || c == 0x7F; }),
             "a sentence has no control characters");
    promised(std::ranges::all_of(printable(reply), isPrintable), "printable() is");
    promised(!whyFailed(exchange).isEmpty(), "a failure has a reason");
    promised(!meaningOf(reply).empty() && !outcomeOf(exchange).empty(), "an exchange has words");
    promised(addressOf(reply) >= -1 && addressOf(reply) <= 255, "an address is one byte");
    promised(parameterOf(reply).size() <= reply.size(), "a parameter is part of the frame");
}

void holdFields(const Command& row, const std::string& reply)
{
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
        const auto part = field(row.id, i, reply);
        const auto length = static_cast<std::size_t>(row.fields[i].length);
        promised(length == 0 || part.size() <= length, "a field is not longer than it is");
        promised(!holdsDigitsOnly(row.id, reply) || text::allDigits(part), "digits only");
    }
}

void holdConfirmation(const link::Exchange& exchange)
{
    const auto& frame = exchange.transaction.frame;
    const auto& reply = exchange.reply;
    const auto length = static_cast<std::size_t>(exchange.transaction.echoLength);
    const auto compared =
        exchange.transaction.ignoresBlanks ? text::trimBlanks(reply) : std::string_view(reply);
    promised(!link::isConfirmed(exchange) || compared.substr(0, length) == frame.substr(0, length),
             "what confirms repeats the frame");
    promised(!link::isAnswered(exchange) ||
                 (compared.starts_with(':') && reply.find("\r\n") != std::string::npos),
             "an answer is from mark to line end");
}

/// What is printed and kept as settings can be set again as it is.
void holdSettings(const std::string& reply)
{
    for (const auto type : {link::TypeB, link::TypeC}) {
        for (const auto& setting : settingsOf(type)) {
            const auto value = setting.read(reply);
            promised(std::ranges::none_of(inWords(value), [](QChar c) { return c < u' '; }),
                     "one line of words");
            if (value.isNull()) continue;
            const auto command = setting.write(kAddress, value);
            const auto* why = std::get_if<NotSent>(&command);
            promised(!why || *why == NotSent::ForTheRecord, "what was read can be written");
        }
    }
}

void searchReply(const std::string& reply)
{
    const auto found = foundAddresses(reply);
    promised(found.size() <= 251, "no more answers than addresses");
    for (const auto& address : found)
        promised(address.size() >= 2 && text::allDigits(address) && text::integerOf(address) <= 255,
                 "an address is two digits or three");
    promised(!foundText(found).empty(), "a search ends with words");
}

void clockReply(const std::string& reply)
{
    const auto text = clockText(reply);
    promised(text.size() <= 20, "a clock has 20 characters");
    if (const auto time = clockOf(reply))
        promised(time->toString(QStringLiteral("yyyy-MM-dd  HH:mm:ss")).toStdString() == text,
                 "a moment is as received");
    promised(!clockQuestion(reply).empty(), "a question");
}

void modeReply(const std::string& reply)
{
    const auto mode = readMode(reply);
    promised(!modeQuestion(mode).empty(), "a question");
    if (!isPlainModeReply(reply)) return;
    for (const int value : mode.values)
        promised(value >= 0 && value <= 99, "two digits");
}

void valuesReply(const std::string& reply)
{
    promised(firstValue(reply).size() <= 8 && secondValue(reply).size() <= 8, "a value has eight characters");
    promised(isValuesReply(reply) ? xyText(reply).size() == 28 : xyText(reply) == kReadingFailed,
             "a reading or none");
    promised(zText(reply, true).starts_with("Z: ") && zText(reply, false).starts_with("Z1: "), "Z is named");
    for (const auto sensor : {Sensor::X, Sensor::Y, Sensor::Z1, Sensor::Z2})
        promised(!isMeasurement(reply) || measuredBy(sensor, reply).size() == 8,
                 "a measurement has eight characters");
    promised(!whyNoMeasurement(reply).empty(), "a reason");
}

void pointersReply(const std::string& reply)
{
    const auto pointers = readPointers(reply);
    if (!whyNotFetchable(pointers).empty()) return;
    const auto span = spanOf(pointers);
    promised(span.capacity >= 1 && span.first >= 0 && span.end >= span.first && span.end <= 32767,
             "a span of records");
    promised(span.indexOf(span.first) < span.capacity, "a slot of the ring");
}

void recordReply(const std::string& reply)
{
    for (const auto* layout : {&kTwoDirections, &kThreeDirections}) {
        const auto read = readRecord(reply, *layout);
        std::size_t readable = read.record.time ? 1 : 0;
        if (read.record.time)
            promised(read.record.time->civil().has_value(), "a record has a date of the calendar");
        for (const auto& reading : read.record.readings) {
            promised(std::isfinite(reading.value_or(0)), "a reading is a number");
            readable += reading ? 1U : 0U;
        }
        promised(readable + read.unreadable.size() == layout->readings + 1, "each field is read or named");
        for (const auto& field : read.unreadable)
            promised(std::ranges::all_of(unreadableText(field), isPrintable), "the fault can be shown");
        const auto misfits = misfitsOf(":01240007FF\r\n", reply, *layout);
        for (const auto misfit : misfits)
            promised(std::ranges::all_of(misfitText(misfit, reply), isPrintable),
                     "the difference can be shown");
        const bool whole = layoutOfReply(reply) == *layout && reply.starts_with(":01240007");
        promised(misfits.empty() || !whole, "an answer fits");
    }
}

void grayscaleReply(const GrayscaleRow& row, const std::string& reply)
{
    PixelArray array;
    const std::vector<std::int16_t> before(3, 7);
    array.store(before);
    const auto read = readGrayscale(row, reply, array);
    if (!read.good) {
        promised(std::ranges::equal(array.pixels(), before), "a malformed reply changes nothing");
    } else {
        promised(array.count() <= kHighestIndex && static_cast<int>(read.damaged.size()) <= array.count(),
                 "no more pixels than places");
        const int length = 2 * array.count() + command(row.command).reply.count;
        promised(reply.size() == static_cast<std::size_t>(length), "the length is that of the pixels");
        promised(std::ranges::all_of(array.pixels(), [](int pixel) { return pixel >= 0 && pixel <= 255; }),
                 "a byte");
    }
    const auto progress = grayscaleProgress(row, reply);
    promised(progress.received >= 0 && (progress.expected < 0 || progress.received <= progress.expected),
             "no more has come than comes");
}

void tableReply(const TableRow& row, const std::string& reply)
{
    Points points{};
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i] = {static_cast<float>(i) * 5 - 20, 1.5F * static_cast<float>(i) - 30};
    const auto frame = tableDownload(row.sensor, kAddress, points).frame;
    promised(echoAgrees(row.sensor, frame, frame), "the frame agrees with itself");
    promised(!echoAgrees(row.sensor, reply, reply) || reply.size() == frame.size(),
             "only a whole frame agrees");
    promised(!echoAgrees(row.sensor, frame, reply) || reply.size() > 100,
             "no part of the echo is taken for all");
}

void wireReply(const std::string& reply)
{
    const auto wire = wireOf(reply);
    promised(wire || !isPlainWireReply(reply), "a plain reply can be read");
    if (!wire) return;
    promised(std::isfinite(wire->diameterTenthsMm) && std::isfinite(wire->errorTenthsMm),
             "lengths are numbers");
    promised(!wireText(*wire, true).empty() && !wireText(*wire, false).empty(), "words");
    if (isPlainWireReply(reply))
        promised(fitsWireField(wire->diameterTenthsMm) && fitsWireField(wire->errorTenthsMm),
                 "fits its field");
}

void offsetReply(const OffsetRow& row, const std::string& reply)
{
    const auto offset = offsetOf(row, reply);
    promised(offset.size() <= kValueLength, "an offset has eight characters");
    if (!isSignedValue(offset)) return;
    promised(std::ranges::all_of(offset, isPrintable) && std::abs(text::Val(offset)) < 1e7,
             "an offset is a number");
    const auto again = offsetSet(row, kAddress, offset);
    promised(static_cast<int>(again.frame.size()) == again.reply.count, "an offset can be set again");
}

void stateReply(std::optional<bool> state, CommandId id, const std::string& reply)
{
    const auto digits = field(id, 0, reply);
    promised(!state || digits == (*state ? "01" : "00"), "a state is 01 or 00");
}

/// What this command's reply is read by. A command without a case does not compile.
void readBy(CommandId id, const std::string& reply)
{
    switch (id) {
    case CommandId::Search:
        return searchReply(reply);
    case CommandId::SetClock:
    case CommandId::QueryClock:
        return clockReply(reply);
    case CommandId::QueryMode:
        return modeReply(reply);
    case CommandId::ReadXY:
    case CommandId::ReadZ:
        return valuesReply(reply);
    case CommandId::QueryPointers:
        return pointersReply(reply);
    case CommandId::FetchRecord:
        return recordReply(reply);
    case CommandId::CalibrateX:
    case CommandId::CalibrateY:
    case CommandId::CalibrateZ1:
    case CommandId::CalibrateZ2:
        return tableReply(*std::ranges::find(kTables, id, &TableRow::command), reply);
    case CommandId::GrayscaleX:
    case CommandId::GrayscaleY:
    case CommandId::GrayscaleZ1:
    case CommandId::GrayscaleZ2:
        return grayscaleReply(*std::ranges::find(kGrayscales, id, &GrayscaleRow::command), reply);
    case CommandId::QueryWire:
        return wireReply(reply);
    case CommandId::QueryOffsetX:
    case CommandId::QueryOffsetY:
    case CommandId::QueryOffsetZ:
        return offsetReply(*std::ranges::find(kOffsets, id, &OffsetRow::query), reply);
    case CommandId::QueryFeature:
        promised(featureIsOn(reply) != (featureStateOf(reply) == false), "on for anything but 00");
        return stateReply(featureStateOf(reply), id, reply);
    case CommandId::QuerySwap:
    case CommandId::QueryInvertX:
    case CommandId::QueryInvertY:
    case CommandId::QueryInvertZ:
        return stateReply(switchStateOf(reply), id, reply);
    case CommandId::QueryStitching:
        return promised(locationOf(reply).size() <= kLocationLength, "a location has four characters");
    // echoes only
    case CommandId::ChangeAddress:
    case CommandId::SetInterval:
    case CommandId::DeleteRecords:
    case CommandId::SetWire:
    case CommandId::SetOffsetX:
    case CommandId::SetOffsetY:
    case CommandId::SetOffsetZ:
    case CommandId::SetFeature:
    case CommandId::SetSwap:
    case CommandId::SetInvertX:
    case CommandId::SetInvertY:
    case CommandId::SetInvertZ:
    case CommandId::SetStitching:
        return;
    }
}

} // namespace
} // namespace quorvel::protocol

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel::protocol;
    quorvel::test::FuzzInput input(data, size);
    const auto& row = commands()[input.below(commands().size())];
    const auto form = input.byte();
    quorvel::link::Exchange exchange;
    exchange.transaction = transaction(row.id, kAddress, "01020304");
    exchange.reply = replyOf(row, form, input.rest());
    exchange.outcome = form & 0x80 ? quorvel::link::Outcome::Short : quorvel::link::Outcome::Complete;
    holdNumbers(exchange.reply);
    holdWords(exchange);
    holdFields(row, exchange.reply);
    holdConfirmation(exchange);
    holdSettings(exchange.reply);
    readBy(row.id, exchange.reply);
    return 0;
}
