#include "protocol/snapshot.h"

#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/feature.h"
#include "protocol/offset.h"
#include "protocol/readout_clock.h"
#include "protocol/schedule.h"
#include "protocol/stitching.h"
#include "protocol/switches.h"
#include "protocol/wire.h"
#include "text/number.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <optional>

namespace quorvel::protocol {

namespace {

using link::InstrumentType;
using link::shown;
using Address = std::string_view;
using Reply = std::string_view;
using Command = std::variant<link::Transaction, NotSent>;

constexpr int kLargestNumber = 99;
constexpr auto kTimeGoesOn = "the time it shows is past";
constexpr auto kNoFixedHours = "there is no command for fixed hours of the day";
constexpr auto kUnreadable = "The answer \"%1\" was not understood.";
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

template<OffsetNumber row>
link::Transaction queryOffset(Address address)
{
    return offsetQuery(kOffsets[row], address);
}

template<OffsetNumber row>
QJsonValue readOffset(Reply reply)
{
    const auto offset = offsetOf(kOffsets[row], reply);
    return isSignedValue(offset) ? QJsonValue(shown(offset)) : QJsonValue::Null;
}

template<OffsetNumber row>
Command writeOffset(Address address, const QJsonValue& value)
{
    const auto offset = link::bytes(value.toString());
    if (!isSignedValue(offset)) return NotSent::Malformed;
    return offsetSet(kOffsets[row], address, offset);
}

QJsonValue readFeature(Reply reply) { return flag(featureStateOf(reply)); }

Command writeFeature(Address address, const QJsonValue& value)
{
    if (!value.isBool()) return NotSent::Malformed;
    return featureSet(address, value.toBool());
}

template<SwitchNumber row>
link::Transaction querySwitch(Address address)
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

QJsonValue readAutoReading(Reply reply)
{
    if (!isPlainModeReply(reply)) return QJsonValue::Null;
    const auto mode = readMode(reply);
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
    return intervalSet(address, code + "00");
}

bool isPrintableLocation(std::string_view location)
{
    return location.size() == kLocationLength &&
           std::all_of(location.begin(), location.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

QJsonValue readStitching(Reply reply)
{
    const auto location = locationOf(reply);
    return isPrintableLocation(location) ? QJsonValue(shown(location)) : QJsonValue::Null;
}

Command writeStitching(Address address, const QJsonValue& value)
{
    const auto location = link::bytes(value.toString());
    if (!isPrintableLocation(location)) return NotSent::Malformed;
    return locationSet(address, location);
}

constexpr Setting kSettings[] = {
    {"wire", "Wire", always, wireQuery, readWire, writeWire},
    {"offsetX", "Offset X", always, queryOffset<kXRow>, readOffset<kXRow>, writeOffset<kXRow>},
    {"offsetY", "Offset Y", hasY, queryOffset<kYRow>, readOffset<kYRow>, writeOffset<kYRow>},
    {"offsetZ", "Offset Z", hasZ, queryOffset<kZRow>, readOffset<kZRow>, writeOffset<kZRow>},
    {"referenceFeature", "Reference feature", always, featureQuery, readFeature, writeFeature},
    {"invertX", "Inversion X", always, querySwitch<kInvertXRow>, readSwitch, writeSwitch<kInvertXRow>},
    {"invertY", "Inversion Y", hasY, querySwitch<kInvertYRow>, readSwitch, writeSwitch<kInvertYRow>},
    {"invertZ", "Inversion Z", hasZ, querySwitch<kInvertZRow>, readSwitch, writeSwitch<kInvertZRow>},
    {"swap", "Swap of X and Y", hasY, querySwitch<kSwapRow>, readSwitch, writeSwitch<kSwapRow>},
    {"clock", "Clock", always, clockQuery, readClock, keepClock, kTimeGoesOn},
    {"autoReading", "Automatic readings", always, modeQuery, readAutoReading, writeAutoReading,
     kNoFixedHours},
    {"stitching", "Stitching location", isStitched, locationQuery, readStitching, writeStitching},
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

std::span<const Setting> settings() { return kSettings; }

std::vector<Setting> settingsOf(InstrumentType type)
{
    std::vector<Setting> settings;
    std::copy_if(std::begin(kSettings), std::end(kSettings), std::back_inserter(settings),
                 [type](const Setting& setting) { return setting.isFor(type); });
    return settings;
}

Told toldBy(const Setting& setting, const link::Exchange& exchange)
{
    if (!exchange.complete() || !link::isAnswered(exchange)) return {QJsonValue::Null, whyFailed(exchange)};
    auto value = setting.read(exchange.reply);
    if (!value.isNull()) return {value, QString()};
    return {QJsonValue::Null, QString(kUnreadable).arg(shown(inOneLine(exchange.reply)))};
}

QString inWords(const QJsonValue& value)
{
    auto line = words(value);
    std::replace_if(
        line.begin(), line.end(),
        [](QChar character) { return character.category() == QChar::Other_Control; }, QChar(u'?'));
    return line;
}

QString inSentence(const QJsonValue& value)
{
    const auto field = [&value](const char* name) { return value[QLatin1String(name)]; };
    if (field("diameterMm").isDouble() && field("permittedErrorMm").isDouble() &&
        field("selfCalibration").isBool()) {
        return QStringLiteral("%1 mm, error %2 mm, self-calibration %3")
            .arg(inWords(field("diameterMm")), inWords(field("permittedErrorMm")),
                 inWords(field("selfCalibration")));
    }
    if (field("mode") == QJsonValue("interval") && field("hours").isDouble() && field("minutes").isDouble() &&
        field("seconds").isDouble()) {
        return QStringLiteral("every %1 h %2 min %3 s")
            .arg(inWords(field("hours")), inWords(field("minutes")), inWords(field("seconds")));
    }
    if (field("mode") == QJsonValue("fixed") && field("hoursOfDay").isArray())
        return QStringLiteral("at %1 o'clock").arg(inWords(field("hoursOfDay")));
    const auto time = QDateTime::fromString(value.toString(), Qt::ISODate);
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : inWords(value);
}

} // namespace quorvel::protocol
