#include "autoread/ring_state.h"
#include "link/bytes.h"
#include "text/duration.h"
#include "text/number.h"

namespace quorvel::autoread {

using namespace protocol;

namespace {

const char* typeText(const RingState& state) { return state.threeDirection ? "C" : "A, B or D"; }

QJsonValue jsonOf(const Record& record, const RecordLayout& layout)
{
    QJsonObject object{
        {"time", record.time ? QJsonValue(QString::fromStdString(record.time->iso())) : QJsonValue()}};
    for (std::size_t i = 0; i < layout.readings; ++i) {
        // with the digits of single precision, as in a file
        const auto& reading = record.readings[i];
        object.insert(link::shown(kReadings[i].field) + QStringLiteral("Mm"),
                      reading ? QJsonValue(text::Val(jet::Value(*reading).text())) : QJsonValue());
    }
    return object;
}

std::string textOf(const Record& record, const RecordLayout& layout)
{
    auto words = record.time ? record.time->iso() : std::string("no readable time");
    if (record.time) words[words.find('T')] = ' ';
    for (std::size_t i = 0; i < layout.readings; ++i) {
        const auto& reading = record.readings[i];
        words.append("  ").append(kReadings[i].field).append(" ");
        words += reading ? jet::Value(*reading).text() : "?";
    }
    return words;
}

} // namespace

QJsonObject json(const ClockReading& clock)
{
    return {{"readout", clock.readout.toString(Qt::ISODate)},
            {"pc", clock.pc.toString(Qt::ISODate)},
            {"aheadSeconds", clock.ahead()}};
}

QJsonObject json(const RingState& state, int address)
{
    const bool empty = state.pointers.isEmpty();
    const auto interval = intervalSeconds(state.mode);
    return {{"address", address},
            {"capacity", state.pointers.capacity},
            {"firstSlot", state.pointers.first},
            {"nextSlot", state.pointers.next},
            {"records", state.held()},
            {"type", typeText(state)},
            {"first", empty ? QJsonValue() : jsonOf(state.first, state.layout())},
            {"last", empty ? QJsonValue() : jsonOf(state.last, state.layout())},
            {"mode", state.mode ? QJsonValue(link::shown(modeText(*state.mode))) : QJsonValue()},
            {"intervalSeconds", interval ? QJsonValue(*interval) : QJsonValue()},
            {"clock", state.clock ? QJsonValue(json(*state.clock)) : QJsonValue()}};
}

std::string text(const RingState& state, int address)
{
    auto lines = "Readout " + text::general(address) + ", type " + typeText(state) + ": " +
                 text::general(state.held()) + " records, room for " +
                 text::general(state.pointers.capacity) + "\n";
    if (!state.pointers.isEmpty()) {
        lines += "First: " + textOf(state.first, state.layout()) + "\n";
        lines += "Last:  " + textOf(state.last, state.layout()) + "\n";
    }
    if (state.mode) lines += modeText(*state.mode) + "\n";
    if (state.clock) lines += "Clock: " + text(*state.clock) + "\n";
    return lines;
}

} // namespace quorvel::autoread
