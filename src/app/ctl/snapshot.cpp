#include "app/ctl/snapshot.h"

#include "autoread/mode.h"
#include "calibration/stitching.h"
#include "link/bytes.h"
#include "settings/feature.h"
#include "settings/offset.h"
#include "settings/readout_clock.h"
#include "settings/switches.h"
#include "settings/wire.h"
#include "text/number.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <optional>

namespace quorvel::ctl {

namespace {

using namespace settings;
using link::InstrumentType;
using link::shown;
using Address = std::string_view;
using Reply = std::string_view;
using Command = std::variant<Exchange, NotSent>;

constexpr int kLargestNumber = 99;
constexpr std::size_t kLocationLength = 4;
constexpr const char* kIntervalNames[] = {"hours", "minutes", "seconds"};

bool isStitched(InstrumentType type) { return type == link::TypeB; }

QJsonValue flag(std::optional<bool> on) { return on ? QJsonValue(*on) : QJsonValue::Null; }

QJsonValue readWire(Reply reply)
{
    const auto wire = wireOf(reply);
    if (!wire || !isPlainWireReply(reply)) return QJsonValue::Null;
    return QJsonObject{{"diameterMm", static_cast<double>(wire->diameterTenthsMm) / 10},
                       {"permittedErrorMm", static_cast<double>(wire->errorTenthsMm) / 10},
                       {"selfCalibration", wire->selfCalibration}};
}

Command writeWire(Address address, const QJsonValue& value)
{
    const auto diameter = value["diameterMm"];
    const auto error = value["permittedErrorMm"];
    const auto selfCalibration = value["selfCalibration"];
    if (!diameter.isDouble() || !error.isDouble() || !selfCalibration.isBool()) return NotSent::Malformed;
    const WireParameters wire{tenthsOf(text::general(diameter.toDouble())),
                              tenthsOf(text::general(error.toDouble())), selfCalibration.toBool()};
    if (!fitsWireField(wire.diameterTenthsMm) || !fitsWireField(wire.errorTenthsMm))
        return NotSent::Malformed;
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
    return isSignedValue(offset) ? QJsonValue(shown(offset)) : QJsonValue::Null;
}

template<DirectionRow row>
Command writeOffset(Address address, const QJsonValue& value)
{
    const auto offset = link::bytes(value.toString());
    if (!isSignedValue(offset)) return NotSent::Malformed;
    return offsetSet(kDirections[row], address, offset);
}

QJsonValue readFeature(Reply reply) { return flag(featureStateOf(reply)); }

Command writeFeature(Address address, const QJsonValue& value)
{
    if (!value.isBool()) return NotSent::Malformed;
    return featureSet(address, value.toBool());
}

template<SwitchNumber row>
Exchange querySwitch(Address address)
{
    return switchQuery(kSwitches[row], address);
}

QJsonValue readSwitch(Reply reply) { return flag(switchStateOf(reply)); }

template<SwitchNumber row>
Command writeSwitch(Address address, const QJsonValue& value)
{
    if (!value.isBool()) return NotSent::Malformed;
    return switchSet(kSwitches[row], address, value.toBool());
}

QJsonValue readClock(Reply reply)
{
    const auto time = clockOf(reply);
    return time ? time->toString(Qt::ISODate) : shown(clockText(reply));
}

Command keepClock(Address /*address*/, const QJsonValue& /*value*/) { return NotSent::ForTheRecord; }

Exchange queryAutoReading(Address address)
{
    return {.frame = autoread::modeFrame(address), .replyLength = autoread::kModeReplyLength};
}

QJsonValue readAutoReading(Reply reply)
{
    if (!autoread::isPlainModeReply(reply)) return QJsonValue::Null;
    const auto mode = autoread::readMode(reply);
    if (!mode.isInterval()) {
        QJsonArray hours;
        for (const int hour : mode.values)
            hours.append(hour);
        return QJsonObject{{"mode", "fixed"}, {"hoursOfDay", hours}};
    }
    QJsonObject interval{{"mode", "interval"}};
    for (std::size_t i = 0; i < std::size(kIntervalNames); ++i)
        interval.insert(kIntervalNames[i], mode.values[i]);
    return interval;
}

Command writeAutoReading(Address address, const QJsonValue& value)
{
    if (value["mode"] == QJsonValue("fixed")) return NotSent::ForTheRecord;
    if (value["mode"] != QJsonValue("interval")) return NotSent::Malformed;
    std::string code;
    for (const auto* name : kIntervalNames) {
        const int number = value[QLatin1String(name)].toInt(-1);
        if (number < 0 || number > kLargestNumber) return NotSent::Malformed;
        code += text::format(number, "00");
    }
    return Exchange{.frame = autoread::intervalFrame(address, code + "00"),
                    .replyLength = autoread::kIntervalReplyLength};
}

Exchange queryStitching(Address address)
{
    return {.frame = calibration::locationQueryFrame(address),
            .replyLength = calibration::kStitchingReplyLength};
}

bool isPrintableLocation(std::string_view location)
{
    return location.size() == kLocationLength &&
           std::all_of(location.begin(), location.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

QJsonValue readStitching(Reply reply)
{
    const auto location = calibration::locationOf(reply);
    return isPrintableLocation(location) ? QJsonValue(shown(location)) : QJsonValue::Null;
}

Command writeStitching(Address address, const QJsonValue& value)
{
    const auto location = link::bytes(value.toString());
    if (!isPrintableLocation(location)) return NotSent::Malformed;
    return Exchange{.frame = calibration::locationSetFrame(address, location),
                    .replyLength = calibration::kStitchingReplyLength,
                    .echoLength = calibration::kStitchingEchoLength};
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
    {"clock", always, clockQuery, readClock, keepClock},
    {"autoReading", always, queryAutoReading, readAutoReading, writeAutoReading},
    {"stitching", isStitched, queryStitching, readStitching, writeStitching},
};

QString words(const QJsonValue& value);

QString listInWords(const QJsonArray& values)
{
    QStringList all;
    for (const auto& value : values)
        all << words(value);
    return all.join(u' ');
}

QString fieldsInWords(const QJsonObject& object)
{
    QStringList all;
    for (auto field = object.begin(); field != object.end(); ++field)
        all << field.key() + u' ' + words(field.value());
    return all.join(QStringLiteral(", "));
}

QString words(const QJsonValue& value)
{
    if (value.isNull()) return QStringLiteral("nothing");
    if (value.isBool()) return value.toBool() ? QStringLiteral("on") : QStringLiteral("off");
    if (value.isDouble()) return shown(text::general(value.toDouble()));
    if (value.isArray()) return listInWords(value.toArray());
    return value.isObject() ? fieldsInWords(value.toObject()) : value.toString();
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
    auto line = words(value);
    std::replace_if(
        line.begin(), line.end(),
        [](QChar character) { return character.category() == QChar::Other_Control; }, QChar(u'?'));
    return line;
}

} // namespace quorvel::ctl
