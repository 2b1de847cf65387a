#include "site/readinglines.h"

#include "link/bytes.h"
#include "text/number.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cctype>

namespace quorvel::site {

namespace {

using link::shown;

constexpr auto kMeasurement = "quorvel_reading";
constexpr int kAddressWidth = 3;

QString mmKey(protocol::Sensor sensor) { return keyOf(sensor) + QStringLiteral("Mm"); }

QString typeOf(const Place& place) { return shown(protocol::nameOf(place.readout.type)); }

bool isDecimal(std::string_view digits)
{
    const auto point = digits.find('.');
    const auto whole = digits.substr(0, point);
    const auto decimals = point == std::string_view::npos ? std::string_view("0") : digits.substr(point + 1);
    return text::allDigits(whole) && text::allDigits(decimals);
}

QByteArray csvField(const QString& field)
{
    auto written = field.toUtf8();
    if (!written.contains(',') && !written.contains('"') && !written.contains('\n') &&
        !written.contains('\r'))
        return written;
    return '"' + written.replace('"', "\"\"") + '"';
}

void addTag(QByteArray& line, const char* key, const QString& value)
{
    if (value.isEmpty()) return;
    line.append(',').append(key).append('=');
    for (const char character : value.toUtf8()) {
        if (character == ',' || character == '=' || character == ' ') line.append('\\');
        line.append(character == '\\' ? '/' : character);
    }
}

QByteArray influxText(const std::string& text)
{
    QByteArray written("\"");
    for (const char character : text) {
        if (character == '"' || character == '\\') written.append('\\');
        written.append(character);
    }
    return written + '"';
}

} // namespace

QString isoTime(const QDateTime& time)
{
    return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

std::string plainNumber(std::string_view received)
{
    if (!text::isNumber(received)) return {};
    std::string digits;
    std::copy_if(received.begin(), received.end(), std::back_inserter(digits),
                 [](char c) { return std::isspace(static_cast<unsigned char>(c)) == 0; });
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) digits.erase(0, 1);
    if (!isDecimal(digits)) return text::general(text::Val(received));
    const auto first = std::min(digits.find_first_not_of('0'), digits.size() - 1);
    digits.erase(0, first);
    if (digits.front() == '.') digits.insert(0, "0");
    return negative ? "-" + digits : digits;
}

QString valuesText(const Reading& reading)
{
    QString line;
    for (const auto sensor : kSensors) {
        const auto& value = reading.received.at(placeOf(sensor));
        if (value) line += QStringLiteral("  %1: %2").arg(shown(protocol::nameOf(sensor)), shown(*value));
    }
    return line;
}

QByteArray textLine(const Place& place, const Reading& reading)
{
    auto line = QStringLiteral("%1  %2").arg(isoTime(reading.time)).arg(reading.address, kAddressWidth);
    if (!place.readout.name.isEmpty()) line += QStringLiteral("  ") + place.readout.name;
    line += valuesText(reading);
    if (!reading.complete()) line += QStringLiteral("  ") + QString::fromStdString(reading.outcome);
    return line.toUtf8() + '\n';
}

QByteArray csvHeader()
{
    QStringList names{"time", "site", "address", "name", "type"};
    for (const auto sensor : kSensors)
        names << mmKey(sensor);
    names << "outcome";
    return names.join(u',').toUtf8() + '\n';
}

QByteArray csvRow(const Place& place, const Reading& reading)
{
    QByteArrayList fields{isoTime(reading.time).toUtf8(), csvField(place.site),
                          QByteArray::number(reading.address), csvField(place.readout.name),
                          typeOf(place).toUtf8()};
    for (const auto sensor : kSensors)
        fields << QByteArray::fromStdString(plainNumber(reading.received.at(placeOf(sensor)).value_or("")));
    fields << QByteArray::fromStdString(reading.outcome);
    return fields.join(',') + '\n';
}

QByteArray ndjsonLine(const Place& place, const Reading& reading)
{
    QJsonObject object{{"time", isoTime(reading.time)}, {"site", place.site},
                       {"address", reading.address},    {"name", place.readout.name},
                       {"type", typeOf(place)},         {"outcome", QString::fromStdString(reading.outcome)}};
    for (const auto sensor : kSensors) {
        const auto mm = reading.mm(sensor);
        const auto& text = reading.received.at(placeOf(sensor));
        object.insert(mmKey(sensor), mm ? QJsonValue(*mm) : QJsonValue());
        object.insert(keyOf(sensor) + QStringLiteral("Text"), text ? QJsonValue(shown(*text)) : QJsonValue());
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray influxLine(const Place& place, const Reading& reading)
{
    QByteArray line(kMeasurement);
    // tags in the order of their keys, as the protocol advises
    addTag(line, "address", QString::number(reading.address));
    addTag(line, "name", place.readout.name);
    addTag(line, "site", place.site);
    addTag(line, "type", typeOf(place));
    line.append(' ');
    for (const auto sensor : kSensors) {
        const auto number = plainNumber(reading.received.at(placeOf(sensor)).value_or(""));
        if (!number.empty())
            line.append(mmKey(sensor).toUtf8()).append('=').append(number.c_str()).append(',');
    }
    line.append("outcome=").append(influxText(reading.outcome));
    line.append(' ').append(QByteArray::number(reading.time.toMSecsSinceEpoch())).append("000000\n");
    return line;
}

} // namespace quorvel::site
