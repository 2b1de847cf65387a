#include "sim/commands.h"

#include "sim/grayscale.h"
#include "sim/text.h"

#include <algorithm>

namespace quorvelsim {

namespace {

using Fields = std::optional<std::string>;

std::size_t index(const Request& request) { return static_cast<std::size_t>(request.command->which); }

std::optional<bool> flagOf(std::string_view text)
{
    if (text == "01") return true;
    if (text == "00") return false;
    return std::nullopt;
}

std::string flagText(bool on) { return on ? "01" : "00"; }

bool setAddress(Readout& readout, const Request& request)
{
    const auto address = hexByte(request.parameter);
    if (!address || *address < 1 || *address > 249) return false;
    readout.address = *address;
    return true;
}

bool setClock(Readout& readout, const Request& request)
{
    const auto time = fromBusTime(request.parameter);
    if (!time) return false;
    readout.clock.set(*time, request.now);
    readout.restartAutoReading(request.now);
    return true;
}

Fields queryClock(Readout& readout, const Request& request) { return busTime(readout.clock.at(request.now)); }

bool setInterval(Readout& readout, const Request& request)
{
    AutoReading wanted;
    for (std::size_t i = 0; i < wanted.values.size(); ++i) {
        const auto value = decimal(mid(request.parameter, 1 + 2 * i, 2));
        if (!value) return false;
        wanted.values[i] = *value;
    }
    if (wanted.interval() < 1 || wanted.values[1] > 59 || wanted.values[2] > 59) return false;
    readout.autoReading = wanted;
    readout.restartAutoReading(request.now);
    return true;
}

Fields queryAutoReading(Readout& readout, const Request& /*request*/)
{
    std::string fields = digits(readout.autoReading.mode, 2);
    for (const int value : readout.autoReading.values)
        fields += digits(value, 2);
    return fields;
}

/// `which` is the first of the two sensors that the answer shows.
Fields queryReading(Readout& readout, const Request& request)
{
    if (!readout.type->has(static_cast<Sensor>(request.command->which))) return std::nullopt;
    const auto values = readout.readings(request.now);
    const auto pair = readingField(values[index(request)]) + readingField(values[index(request) + 1]);
    return readout.readingLength == 29 ? pair + "00" : pair;
}

Fields queryRing(Readout& readout, const Request& /*request*/)
{
    return digits(readout.ring.capacity(), 4) + digits(readout.ring.first(), 4) +
           digits(readout.ring.next(), 4);
}

Fields queryRecord(Readout& readout, const Request& request)
{
    const auto slot = decimal(request.parameter);
    if (!slot || *slot >= readout.ring.capacity()) return std::nullopt;
    std::string text(request.parameter);
    for (const auto& field : readout.recordFields(*slot))
        text += field;
    return text;
}

bool deleteRecords(Readout& readout, const Request& /*request*/)
{
    readout.ring.clear();
    return true;
}

bool setCalibration(Readout& readout, const Request& request)
{
    if (!readout.type->has(static_cast<Sensor>(request.command->which))) return false;
    return readout.calibration[index(request)].load(request.parameter);
}

Fields queryGrayscale(Readout& readout, const Request& request)
{
    const auto sensor = static_cast<Sensor>(request.command->which);
    if (!readout.type->has(sensor)) return std::nullopt;
    const auto pixels = grayscale(readout, sensor, request.now);
    const auto count = static_cast<int>(pixels.size());
    std::string fields = twoHex(count / 256) + twoHex(count % 256);
    fields.reserve(4 + 2 * pixels.size());
    for (const auto pixel : pixels)
        fields += twoHex(pixel);
    return fields;
}

bool setWire(Readout& readout, const Request& request)
{
    const auto diameter = decimal(mid(request.parameter, 1, 2));
    const auto error = decimal(mid(request.parameter, 3, 2));
    const auto selfCalibration = flagOf(mid(request.parameter, 5, 2));
    if (!diameter || !error || !selfCalibration || mid(request.parameter, 7) != "0000") return false;
    readout.diameterTenthsMm = *diameter;
    readout.errorTenthsMm = *error;
    readout.selfCalibration = *selfCalibration;
    return true;
}

Fields queryWire(Readout& readout, const Request& /*request*/)
{
    return digits(readout.diameterTenthsMm, 2) + digits(readout.errorTenthsMm, 2) +
           flagText(readout.selfCalibration) + "0000";
}

bool setOffset(Readout& readout, const Request& request)
{
    if (!signedNumber(request.parameter)) return false;
    readout.offsets[index(request)] = request.parameter;
    return true;
}

Fields queryOffset(Readout& readout, const Request& request) { return readout.offsets[index(request)]; }

bool setReference(Readout& readout, const Request& request)
{
    const auto on = flagOf(request.parameter);
    readout.reference = on.value_or(readout.reference);
    return on.has_value();
}

Fields queryReference(Readout& readout, const Request& /*request*/) { return flagText(readout.reference); }

bool setSwitch(Readout& readout, const Request& request)
{
    const auto on = flagOf(request.parameter);
    if (on) readout.switches[index(request)] = *on;
    return on.has_value();
}

Fields querySwitch(Readout& readout, const Request& request)
{
    return flagText(readout.switches[index(request)]);
}

bool setStitching(Readout& readout, const Request& request)
{
    readout.stitching = request.parameter;
    return true;
}

Fields queryStitching(Readout& readout, const Request& /*request*/) { return readout.stitching; }

constexpr int kX = static_cast<int>(Sensor::X);
constexpr int kY = static_cast<int>(Sensor::Y);
constexpr int kZ = static_cast<int>(Axis::Z);
constexpr int kZ1 = static_cast<int>(Sensor::Z1);
constexpr int kZ2 = static_cast<int>(Sensor::Z2);
constexpr int kSwap = static_cast<int>(Switch::Swap);
constexpr int kInvertX = static_cast<int>(Switch::InvertX);
constexpr int kInvertY = static_cast<int>(Switch::InvertY);
constexpr int kInvertZ = static_cast<int>(Switch::InvertZ);
constexpr std::size_t kTable = CalibrationTable::kCharacters;

// code, parameter length, about, set, query, number at, its width, date at, count at
constexpr Command kCommands[] = {
    {"02", 2, 0, setAddress, nullptr, 6, 2},
    {"03", 12, 0, setClock, nullptr, 12, 6, 6},
    {"04", 0, 0, nullptr, queryClock, 12, 6, 6},
    {"0501", 8, 0, setInterval, nullptr, 8, 2},
    {"06", 0, 0, nullptr, queryAutoReading, 6, 2},
    {"2101", 0, kX, nullptr, queryReading, 8, 8},
    {"2102", 0, kZ1, nullptr, queryReading, 8, 8},
    {"22", 0, 0, nullptr, queryRing, 6, 4},
    {kRecordCode, 4, 0, nullptr, queryRecord, 22, 8, 10},
    {"25", 0, 0, deleteRecords, nullptr},
    {"6111", kTable, kX, setCalibration, nullptr, 8, 8},
    {"6311", kTable, kY, setCalibration, nullptr, 8, 8},
    {"780111", kTable, kZ1, setCalibration, nullptr, 10, 8},
    {"781111", kTable, kZ2, setCalibration, nullptr, 10, 8},
    {"65", 0, kX, nullptr, queryGrayscale, 10, 2, 0, 6},
    {"66", 0, kY, nullptr, queryGrayscale, 10, 2, 0, 6},
    {"7803", 0, kZ1, nullptr, queryGrayscale, 12, 2, 0, 8},
    {"7804", 0, kZ2, nullptr, queryGrayscale, 12, 2, 0, 8},
    {"67", 10, 0, setWire, nullptr, 6, 2},
    {"68", 0, 0, nullptr, queryWire, 6, 2},
    {"71", 8, kX, setOffset, nullptr, 6, 8},
    {"72", 0, kX, nullptr, queryOffset, 6, 8},
    {"73", 8, kY, setOffset, nullptr, 6, 8},
    {"74", 0, kY, nullptr, queryOffset, 6, 8},
    {"7805", 8, kZ, setOffset, nullptr, 8, 8},
    {"7806", 0, kZ, nullptr, queryOffset, 8, 8},
    {"75", 2, 0, setReference, nullptr, 6, 2},
    {"76", 0, 0, nullptr, queryReference, 6, 2},
    {"7701", 2, kSwap, setSwitch, nullptr, 8, 2},
    {"7702", 0, kSwap, nullptr, querySwitch, 8, 2},
    {"7703", 2, kInvertX, setSwitch, nullptr, 8, 2},
    {"7704", 0, kInvertX, nullptr, querySwitch, 8, 2},
    {"7705", 2, kInvertY, setSwitch, nullptr, 8, 2},
    {"7706", 0, kInvertY, nullptr, querySwitch, 8, 2},
    {"7707", 2, kInvertZ, setSwitch, nullptr, 8, 2},
    {"7708", 0, kInvertZ, nullptr, querySwitch, 8, 2},
    {"7821", 4, 0, setStitching, nullptr, 8, 4},
    {"7822", 0, 0, nullptr, queryStitching, 8, 4},
};

} // namespace

const Command* findCommand(std::string_view code)
{
    const auto* found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                     [&](const Command& row) { return row.code == code; });
    return found == std::end(kCommands) ? nullptr : found;
}

bool beginsACommand(std::string_view digits)
{
    const auto begins = [&](const Command& row) { return row.code.starts_with(digits); };
    return kSearchCode.starts_with(digits) || std::any_of(std::begin(kCommands), std::end(kCommands), begins);
}

std::optional<Request> parseCommand(std::string_view frame)
{
    const auto body = mid(frame, 4);
    if (!body.ends_with("FF")) return std::nullopt;
    for (const auto& row : kCommands) {
        if (!body.starts_with(row.code) || body.size() != row.code.size() + row.parameterLength + 2) continue;
        return Request{&row, frame, body.substr(row.code.size(), row.parameterLength)};
    }
    return std::nullopt;
}

std::optional<std::string> answer(Readout& readout, const Request& request)
{
    const auto& row = *request.command;
    if (row.set != nullptr) {
        if (!row.set(readout, request)) return std::nullopt;
        return std::string(request.frame) + "\r\n";
    }
    const auto fields = row.query(readout, request);
    if (!fields) return std::nullopt;
    return ":" + twoHex(readout.address) + std::string(row.code) + *fields + "FF\r\n";
}

} // namespace quorvelsim
