#include "settings/snapshot.h"

#include "link/bytes.h"
#include "settings/feature.h"
#include "settings/offset.h"
#include "settings/readout_clock.h"
#include "settings/switches.h"
#include "settings/wire.h"
#include "text/number.h"
#include "text/reply.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace quorvel::settings {

namespace {

using link::InstrumentType;
using link::shown;
using Address = std::string_view;
using Reply = std::string_view;
using Command = std::optional<Exchange>;

constexpr int kAutoReadingLength = 19;
constexpr int kIntervalMode = 1;
constexpr int kModePosition = 6;
constexpr int kFirstNumberPosition = 8;
constexpr int kLargestNumber = 99;
constexpr int kStitchingLength = 15;
constexpr int kStitchingEcho = 11;
constexpr int kStitchingPosition = 8;
constexpr int kStitchingDigits = 4;
constexpr const char* kIntervalNames[] = {"hours", "minutes", "seconds"};

bool isStitched(InstrumentType type) { return type == link::TypeB; }

Command cannotBeSet(Address /*address*/, const QJsonValue& /*value*/) { return std::nullopt; }

/// A value that is written to the readout as it stands: this many printable characters.
std::optional<std::string> plainText(const QJsonValue& value, int length)
{
    const auto text = link::bytes(value.toString());
    const bool printable = std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
    if (!printable || static_cast<int>(text.size()) != length) return std::nullopt;
    return text;
}

QJsonValue readWire(Reply reply)
{
    const auto wire = wireOf(reply);
    if (!wire) return QJsonValue::Null;
    return QJsonObject{{"diameterMm", std::round(static_cast<double>(wire->diameterTenthsMm)) / 10},
                       {"permittedErrorMm", std::round(static_cast<double>(wire->errorTenthsMm)) / 10},
                       {"selfCalibration", wire->selfCalibration}};
}

Command writeWire(Address address, const QJsonValue& value)
{
    const auto diameter = value["diameterMm"];
    const auto error = value["permittedErrorMm"];
    const auto selfCalibration = value["selfCalibration"];
    if (!diameter.isDouble() || !error.isDouble() || !selfCalibration.isBool()) return std::nullopt;
    const WireParameters wire{tenthsOf(text::general(diameter.toDouble())),
                              tenthsOf(text::general(error.toDouble())), selfCalibration.toBool()};
    if (!fitsWireField(wire.diameterTenthsMm) || !fitsWireField(wire.errorTenthsMm)) return std::nullopt;
    return wireSet(address, wire);
}

template<DirectionRow row>
Exchange queryOffset(Address address)
{
    return offsetQuery(kDirections[row], address);
}

template<DirectionRow row>
QJsonValue readOffset(Reply reply)
{
    const auto offset = offsetOf(kDirections[row], reply);
    return text::isNumber(offset) ? QJsonValue(shown(offset)) : QJsonValue::Null;
}

template<DirectionRow row>
Command writeOffset(Address address, const QJsonValue& value)
{
    const auto offset = plainText(value, kValueLength);
    if (!offset || !text::isNumber(*offset)) return std::nullopt;
    return offsetSet(kDirections[row], address, *offset);
}

QJsonValue readFeature(Reply reply) { return featureIsOn(reply); }

Command writeFeature(Address address, const QJsonValue& value)
{
    return value.isBool() ? Command(featureSet(address, value.toBool())) : std::nullopt;
}

template<SwitchNumber row>
Exchange querySwitch(Address address)
{
    return switchQuery(kSwitches[row], address);
}

QJsonValue readSwitch(Reply reply)
{
    const auto on = switchStateOf(reply);
    return on ? QJsonValue(*on) : QJsonValue::Null;
}

template<SwitchNumber row>
Command writeSwitch(Address address, const QJsonValue& value)
{
    return value.isBool() ? Command(switchSet(kSwitches[row], address, value.toBool())) : std::nullopt;
}

QJsonValue readClock(Reply reply)
{
    const auto time = clockOf(reply);
    return time ? QJsonValue(time->toString(Qt::ISODate)) : QJsonValue::Null;
}

Exchange queryAutoReading(Address address)
{
    return {.frame = frameOf(address, "06FF"), .replyLength = kAutoReadingLength};
}

QJsonValue readAutoReading(Reply reply)
{
    const auto number = [reply](int position) { return text::integerOf(text::mid(reply, position, 2)); };
    QJsonObject interval{{"mode", "interval"}};
    QJsonArray hoursOfDay;
    for (int i = 0; i < 4; ++i) {
        hoursOfDay.append(number(kFirstNumberPosition + 2 * i));
        if (i < 3) interval.insert(kIntervalNames[i], number(kFirstNumberPosition + 2 * i));
    }
    if (number(kModePosition) == kIntervalMode) return interval;
    return QJsonObject{{"mode", "fixed"}, {"hoursOfDay", hoursOfDay}};
}

Command writeAutoReading(Address address, const QJsonValue& value)
{
    if (value["mode"] != QJsonValue("interval")) return std::nullopt;
    std::string code;
    for (const auto* name : kIntervalNames) {
        const int number = value[QLatin1String(name)].toInt(-1);
        if (number < 0 || number > kLargestNumber) return std::nullopt;
        code += text::format(number, "00");
    }
    return Exchange{.frame = frameOf(address, "0501" + code + "00FF"), .replyLength = kAutoReadingLength};
}

Exchange queryStitching(Address address)
{
    return {.frame = frameOf(address, "7822FF"), .replyLength = kStitchingLength};
}

QJsonValue readStitching(Reply reply)
{
    return shown(text::mid(reply, kStitchingPosition, kStitchingDigits));
}

Command writeStitching(Address address, const QJsonValue& value)
{
    const auto location = plainText(value, kStitchingDigits);
    if (!location) return std::nullopt;
    return Exchange{.frame = frameOf(address, "7821" + *location + "FF"),
                    .replyLength = kStitchingLength,
                    .echoLength = kStitchingEcho};
}

constexpr Setting kSettings[] = {
    {"wire", always, wireQuery, readWire, writeWire},
    {"offsetX", always, queryOffset<kXRow>, readOffset<kXRow>, writeOffset<kXRow>},
    {"offsetY", hasY, queryOffset<kYRow>, readOffset<kYRow>, writeOffset<kYRow>},
    {"offsetZ", hasZ, queryOffset<kZRow>, readOffset<kZRow>, writeOffset<kZRow>},
    {"referenceFeature", always, featureQuery, readFeature, writeFeature},
    {"invertX", always, querySwitch<kInvertXRow>, readSwitch, writeSwitch<kInvertXRow>},
    {"invertY", hasY, querySwitch<kInvertYRow>, readSwitch, writeSwitch<kInvertYRow>},
    {"invertZ", hasZ, querySwitch<kInvertZRow>, readSwitch, writeSwitch<kInvertZRow>},
    {"swap", hasY, querySwitch<kSwapRow>, readSwitch, writeSwitch<kSwapRow>},
    {"clock", always, clockQuery, readClock, cannotBeSet},
    {"autoReading", always, queryAutoReading, readAutoReading, writeAutoReading},
    {"stitching", isStitched, queryStitching, readStitching, writeStitching},
};

QString listInWords(const QJsonArray& values)
{
    QStringList words;
    for (const auto& value : values)
        words << inWords(value);
    return words.join(u' ');
}

} // namespace

std::vector<Setting> settingsOf(InstrumentType type)
{
    std::vector<Setting> settings;
    std::copy_if(std::begin(kSettings), std::end(kSettings), std::back_inserter(settings),
                 [type](const Setting& setting) { return setting.isFor(type); });
    return settings;
}

QString inWords(const QJsonValue& value)
{
    if (value.isBool()) return value.toBool() ? QStringLiteral("on") : QStringLiteral("off");
    if (value.isDouble()) return shown(text::general(value.toDouble()));
    if (value.isArray()) return listInWords(value.toArray());
    if (!value.isObject()) return value.toString();
    QStringList words;
    const auto object = value.toObject();
    for (auto field = object.begin(); field != object.end(); ++field)
        words << field.key() + u' ' + inWords(field.value());
    return words.join(QStringLiteral(", "));
}

} // namespace quorvel::settings
