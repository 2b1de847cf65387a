#include "calibration/recorddata.h"

#include "link/address.h"
#include "link/bytes.h"
#include "text/number.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <tuple>

namespace quorvel::calibration {

namespace {

constexpr auto kFormatName = "quorvel calibration record";
constexpr int kVersion = 1;
constexpr qsizetype kMostTakes = 1000; // of a pass
constexpr const char* kVerdicts[] = {"agrees", "differs", "incomplete"};

/// Takes values out of JSON and remembers the first one that is not of its kind.
class Reader {
public:
    QString wrong; ///< the key; empty when all is well

    QJsonObject object(const QJsonObject& in, const char* key)
    {
        return accept(in, key, [](const QJsonValue& value) { return value.isObject(); }).toObject();
    }
    QJsonArray array(const QJsonObject& in, const char* key, qsizetype most)
    {
        return accept(in, key,
                      [most](const QJsonValue& value) {
                          return value.isArray() && value.toArray().size() <= most;
                      })
            .toArray();
    }
    QString text(const QJsonObject& in, const char* key)
    {
        return accept(in, key, [](const QJsonValue& value) { return value.isString(); }).toString();
    }
    bool flag(const QJsonObject& in, const char* key)
    {
        return accept(in, key, [](const QJsonValue& value) { return value.isBool(); }).toBool();
    }
    std::optional<double> number(const QJsonObject& in, const char* key)
    {
        const auto value =
            accept(in, key, [](const QJsonValue& found) { return found.isDouble() && isSingle(found); });
        return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
    }
    std::optional<double> positive(const QJsonObject& in, const char* key)
    {
        const auto value = number(in, key);
        if (value && *value <= 0) fail(key);
        return value;
    }
    QDateTime time(const QJsonObject& in, const char* key)
    {
        const auto written = text(in, key);
        auto moment = QDateTime::fromString(written, Qt::ISODate);
        if (!written.isEmpty() && !moment.isValid()) fail(key);
        return moment;
    }
    int address(const QJsonObject& in, const char* key)
    {
        const auto value = number(in, key).value_or(0);
        if (value == 0) return 0;
        const bool good =
            value == std::floor(value) && value >= link::kLowestAddress && value <= link::kHighestAddress;
        if (!good) fail(key);
        return good ? static_cast<int>(value) : 0;
    }
    void fail(const char* key)
    {
        if (wrong.isEmpty()) wrong = QLatin1String(key);
    }
    static bool isSingle(const QJsonValue& value)
    {
        return std::isfinite(static_cast<float>(value.toDouble()));
    }

private:
    /// Undefined for a key that is missing or null.
    template<class Kind>
    QJsonValue accept(const QJsonObject& in, const char* key, const Kind& isKind)
    {
        auto value = in[QLatin1String(key)];
        if (value.isUndefined() || value.isNull()) return QJsonValue::Undefined;
        if (isKind(value)) return value;
        fail(key);
        return QJsonValue::Undefined;
    }
};

Take readTake(Reader& reader, const QJsonObject& in, qsizetype columns)
{
    Take take{reader.time(in, "at"), reader.address(in, "address"), {}};
    const auto readings = reader.array(in, "readings", columns);
    if (readings.size() != columns) reader.fail("readings");
    for (const auto& reading : readings) {
        if (!reading.isDouble() || !Reader::isSingle(reading)) reader.fail("readings");
        take.readings.push_back(reading.toDouble());
    }
    return take;
}

Pass readPass(Reader& reader, const QJsonObject& in, qsizetype columns)
{
    Pass pass{reader.number(in, "dial"), reader.flag(in, "down"), {}};
    for (const auto& take : reader.array(in, "takes", kMostTakes)) {
        pass.takes.push_back(readTake(reader, take.toObject(), columns));
    }
    return pass;
}

Run readRun(Reader& reader, const QJsonObject& in, qsizetype columns)
{
    Run run;
    const auto points = reader.array(in, "points", kPoints);
    for (qsizetype i = 0; i < points.size(); ++i) {
        if (!points[i].isObject()) reader.fail("points");
        for (const auto& pass : reader.array(points[i].toObject(), "passes", 2)) {
            if (!pass.isObject()) reader.fail("passes");
            run[static_cast<std::size_t>(i)].put(readPass(reader, pass.toObject(), columns));
        }
    }
    return run;
}

DownloadNote readDownload(Reader& reader, const QJsonObject& in)
{
    DownloadNote note{reader.time(in, "at"),
                      reader.address(in, "address"),
                      link::bytes(reader.text(in, "column")),
                      reader.flag(in, "zeros"),
                      link::bytes(reader.text(in, "frame")),
                      Verdict::Incomplete,
                      reader.number(in, "largestDifference")};
    const auto verdict = reader.text(in, "verdict");
    const auto* const found =
        std::ranges::find_if(kVerdicts, [&](const char* known) { return verdict == QLatin1String(known); });
    if (found == std::end(kVerdicts)) {
        reader.fail("verdict");
    } else {
        note.verdict = static_cast<Verdict>(found - kVerdicts);
    }
    return note;
}

void readDetails(Reader& reader, const QJsonObject& in, RecordData& record)
{
    const auto readout = reader.object(in, "readout");
    record.address = reader.address(readout, "address");
    record.serial = reader.text(readout, "serial");
    record.gauge = reader.text(in, "gauge");
    record.person = reader.text(in, "person");
    record.remark = reader.text(in, "remark");
    record.tolerance = reader.positive(in, "tolerance");
    record.steadyWithin = reader.positive(in, "steadyWithin").value_or(record.steadyWithin);
    record.zeroIsFree = reader.flag(in, "zeroIsFree");
    record.begun = reader.time(in, "begun");
}

QJsonValue orNull(const std::optional<double>& number) { return number ? QJsonValue(*number) : QJsonValue(); }

QJsonValue timeText(const QDateTime& moment)
{
    return moment.isValid() ? QJsonValue(moment.toString(Qt::ISODateWithMs)) : QJsonValue();
}

QJsonObject passJson(const Pass& pass)
{
    QJsonArray takes;
    for (const auto& take : pass.takes) {
        QJsonArray readings;
        for (const double reading : take.readings) {
            readings << reading;
        }
        takes << QJsonObject{{"at", timeText(take.at)}, {"address", take.address}, {"readings", readings}};
    }
    return {{"dial", orNull(pass.dial)}, {"down", pass.down}, {"takes", takes}};
}

QJsonObject runJson(const Run& run)
{
    QJsonArray points;
    for (const auto& point : run) {
        QJsonArray passes;
        for (const auto& pass : point.passes) {
            passes << passJson(pass);
        }
        points << QJsonObject{{"passes", passes}};
    }
    return {{"points", points}};
}

QJsonObject downloadJson(const DownloadNote& note)
{
    return {{"at", timeText(note.at)},
            {"address", note.address},
            {"column", link::shown(note.column)},
            {"zeros", note.zeros},
            {"frame", link::shown(note.frame)},
            {"verdict", QLatin1String(nameOf(note.verdict))},
            {"largestDifference", orNull(note.largestDifference)}};
}

QJsonValue merged(const QJsonValue& old, const QJsonValue& fresh);

/// Rows that keep their places are the same rows; passes and takes are written anew.
bool keepsPlaces(const QString& key)
{
    return key == QLatin1String("points") || key == QLatin1String("downloads");
}

QJsonArray mergedRows(const QJsonArray& old, QJsonArray fresh)
{
    for (qsizetype i = 0; i < std::min(old.size(), fresh.size()); ++i) {
        fresh[i] = merged(old[i], fresh[i]);
    }
    return fresh;
}

/// What is fresh, with the keys that only the old one has.
QJsonValue merged(const QJsonValue& old, const QJsonValue& fresh)
{
    if (!old.isObject() || !fresh.isObject()) return fresh;
    auto all = old.toObject();
    const auto changes = fresh.toObject();
    for (auto it = changes.begin(); it != changes.end(); ++it) {
        const auto before = all[it.key()];
        const bool rows = keepsPlaces(it.key()) && before.isArray() && it.value().isArray();
        all[it.key()] =
            rows ? mergedRows(before.toArray(), it.value().toArray()) : merged(before, it.value());
    }
    return all;
}

} // namespace

const char* nameOf(Verdict verdict) { return kVerdicts[static_cast<std::size_t>(verdict)]; }

const Pass* RunPoint::pass(bool down) const
{
    const auto found = std::ranges::find(passes, down, &Pass::down);
    return found == passes.end() ? nullptr : &*found;
}

std::vector<double> meansOf(const Pass& pass)
{
    std::vector<double> means;
    for (std::size_t column = 0; !pass.takes.empty() && column < pass.takes.front().readings.size();
         ++column) {
        double sum = 0;
        for (const auto& take : pass.takes)
            sum += take.readings[column];
        means.push_back(sum / static_cast<double>(pass.takes.size()));
    }
    return means;
}

std::optional<double> meanOf(const RunPoint& point, std::size_t column)
{
    double sum = 0;
    int count = 0;
    for (const auto& pass : point.passes) {
        if (pass.takes.empty()) continue;
        sum += meansOf(pass)[column];
        ++count;
    }
    return count == 0 ? std::nullopt : std::optional(sum / count);
}

void RunPoint::put(Pass pass)
{
    const auto found = std::ranges::find(passes, pass.down, &Pass::down);
    if (found == passes.end()) {
        passes.push_back(std::move(pass));
    } else {
        *found = std::move(pass);
    }
}

std::array<QString, 6> detailsOf(const RecordData& record)
{
    const auto number = [](double value) { return link::shown(text::general(value)); };
    return {record.serial,
            record.gauge,
            record.person,
            record.remark,
            record.tolerance ? number(*record.tolerance) : QString(),
            number(record.steadyWithin)};
}

bool hasSameDetails(const RecordData& one, const RecordData& other)
{
    const auto of = [](const RecordData& record) {
        return std::tie(record.serial, record.gauge, record.person, record.remark, record.tolerance,
                        record.steadyWithin, record.zeroIsFree);
    };
    return of(one) == of(other);
}

void RecordData::settleAddress()
{
    std::set<int> all;
    for (const auto& run : runs) {
        for (const auto& point : run) {
            for (const auto& pass : point.passes) {
                for (const auto& take : pass.takes)
                    all.insert(take.address);
            }
        }
    }
    if (all.size() == 1) address = *all.begin();
}

files::Result<RecordData> readRecord(const QByteArray& json, const DirectionRow& direction)
{
    const auto document = QJsonDocument::fromJson(json);
    if (!document.isObject()) return files::Failure{"it is not a JSON object"};
    RecordData record;
    record.origin = document.object();
    Reader reader;
    if (reader.text(record.origin, "format") != QLatin1String(kFormatName))
        return files::Failure{"it is not a calibration record"};
    if (reader.number(record.origin, "version") != kVersion)
        return files::Failure{"it is of another version of the program"};
    if (directionOf(reader.text(record.origin, "direction")) != &direction)
        return files::Failure{"it is of another direction"};
    const auto columns = static_cast<qsizetype>(direction.readings.size());
    readDetails(reader, record.origin, record);
    const auto runs = reader.object(record.origin, "runs");
    for (const auto& row : kRuns) {
        record.run(row.kind) = readRun(reader, reader.object(runs, row.key), columns);
    }
    for (const auto& note : reader.array(record.origin, "downloads", std::numeric_limits<int>::max())) {
        record.downloads.push_back(readDownload(reader, note.toObject()));
    }
    if (!reader.wrong.isEmpty())
        return files::Failure{"its value of \"" + reader.wrong.toStdString() + "\" is not valid"};
    return record;
}

QJsonObject recordJson(const RecordData& record, const DirectionRow& direction)
{
    QJsonObject runs;
    for (const auto& row : kRuns) {
        runs[QLatin1String(row.key)] = runJson(record.run(row.kind));
    }
    QJsonArray downloads;
    for (const auto& note : record.downloads) {
        downloads << downloadJson(note);
    }
    const QJsonObject fresh{
        {"format", kFormatName},
        {"version", kVersion},
        {"direction", link::shown(protocol::nameOf(direction.direction))},
        {"readout", QJsonObject{{"address", record.address > 0 ? QJsonValue(record.address) : QJsonValue()},
                                {"serial", record.serial}}},
        {"gauge", record.gauge},
        {"person", record.person},
        {"remark", record.remark},
        {"tolerance", orNull(record.tolerance)},
        {"steadyWithin", record.steadyWithin},
        {"zeroIsFree", record.zeroIsFree},
        {"begun", timeText(record.begun)},
        {"runs", runs},
        {"downloads", downloads},
    };
    return merged(record.origin, fresh).toObject();
}

} // namespace quorvel::calibration
