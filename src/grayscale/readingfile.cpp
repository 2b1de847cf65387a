#include "grayscale/readingfile.h"

#include "chart/export.h"
#include "files/replace.h"
#include "grayscale/axes.h"
#include "grayscale/pixelfile.h"
#include "jet/database.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/direction.h"
#include "protocol/grayscale.h"
#include "text/number.h"

#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <limits>
#include <map>

namespace quorvel::grayscale {

namespace {

using files::Failure;

constexpr qint64 kLargestText = 4LL * 1024 * 1024;
constexpr double kBrightest = 255;
constexpr double kDamaged = std::numeric_limits<double>::quiet_NaN();

std::string typeLetter(link::InstrumentType type) { return std::string(protocol::nameOf(type)); }

std::string decimals(double value, const char* pattern) { return text::format(value, pattern); }

std::string headOf(const PixelReading& reading)
{
    std::string head = "# " + chart::programName().toStdString() + '\n';
    const auto add = [&head](const char* name, const std::string& value) {
        if (!value.empty()) head += std::string("# ") + name + ": " + value + '\n';
    };
    add("address", reading.address > 0 ? std::to_string(reading.address) : "");
    add("type", typeLetter(reading.type));
    add("direction", reading.direction.toStdString());
    add("time", reading.at.toString(Qt::ISODate).toStdString());
    add("readings", std::to_string(reading.readings));
    return head;
}

std::string csvOf(const PixelReading& reading)
{
    const bool several = !reading.spread.empty();
    auto table = headOf(reading) + (several ? "sn,mm,hd,spread\n" : "sn,mm,hd\n");
    for (std::size_t i = 0; i < reading.values.size(); ++i) {
        const auto pixel = static_cast<int>(i) + 1;
        const double value = reading.values[i];
        table += std::to_string(pixel) + ',' + decimals(pixelPosition(reading.type, pixel), "0.000") + ',';
        if (!std::isnan(value)) table += several ? decimals(value, "0.00") : text::general(value);
        if (several) table += ',' + decimals(reading.spread[i], "0.00");
        table += '\n';
    }
    return table;
}

PixelArray roundedArray(const PixelReading& reading)
{
    std::vector<std::int16_t> pixels;
    for (const double value : reading.values)
        pixels.push_back(std::isnan(value) ? std::int16_t{0} : text::toInt16(value));
    PixelArray array;
    array.store(pixels);
    return array;
}

/// Collects pixels in any order.
class Collected {
public:
    /// @return false when it is not a pixel, or there already.
    bool add(double number, double value)
    {
        const bool good = number >= 1 && number <= protocol::kHighestIndex && number == std::floor(number) &&
                          (std::isnan(value) || (value >= 0 && value <= kBrightest));
        return good && pixels_.try_emplace(static_cast<int>(number), value).second;
    }
    /// The whole of it, if there is no gap.
    std::optional<PixelReading> whole() const
    {
        if (pixels_.empty() || pixels_.rbegin()->first != static_cast<int>(pixels_.size()))
            return std::nullopt;
        PixelReading reading;
        reading.readings = 1;
        for (const auto& [number, value] : pixels_) {
            reading.values.push_back(value);
            if (std::isnan(value)) reading.damaged.push_back(number);
        }
        return reading;
    }

private:
    std::map<int, double> pixels_;
};

Failure notPixels(const QString& path, const QString& why)
{
    const auto said =
        QStringLiteral("%1 holds no pixels of a sensor: %2. Choose a file that \"Save Data\" or \"Save "
                       "Pixels ...\" wrote.");
    return {said.arg(path, why).toStdString()};
}

files::Result<PixelReading> wholeOf(const QString& path, const Collected& pixels)
{
    if (auto whole = pixels.whole()) return *std::move(whole);
    return notPixels(path, QStringLiteral("some are missing"));
}

files::Result<PixelReading> loadDatabase(const QString& path)
{
    auto database =
        jet::OpenDatabase(QFileInfo(path).filesystemFilePath(), {.access = jet::Access::ReadOnly});
    if (!database) return database.failure();
    auto rows = database->OpenRecordset("select * from data");
    if (!rows) return rows.failure();
    if (!rows->Fields("sn").Exists() || !rows->Fields("hd").Exists())
        return notPixels(path, QStringLiteral("its table \"data\" has no fields \"sn\" and \"hd\""));
    if (const auto complete = rows->Complete(); !complete) return complete.failure();
    Collected pixels;
    for (auto moved = rows->MoveFirst(); !rows->Eof(); moved = rows->MoveNext()) {
        if (!moved) return moved.failure();
        const auto number = rows->Fields("sn").Value().number();
        const auto value = rows->Fields("hd").Value().number();
        if (!number || !value || !pixels.add(*number, *value))
            return notPixels(path, QStringLiteral("a row is not a pixel of its own"));
    }
    return wholeOf(path, pixels);
}

/// A line "# name: value" of the head.
void takeFromHead(const QString& line, std::map<QString, QString>& head)
{
    const auto colon = line.indexOf(u':');
    if (colon > 0) head[line.mid(1, colon - 1).trimmed()] = line.mid(colon + 1).trimmed();
}

std::optional<double> numberIn(const QString& cell)
{
    const auto bytes = link::bytes(cell);
    return text::isNumber(bytes) ? std::optional(text::Val(bytes)) : std::nullopt;
}

void describe(PixelReading& reading, const std::map<QString, QString>& head)
{
    const auto value = [&head](const char* name) {
        const auto found = head.find(QLatin1String(name));
        return found == head.end() ? QString() : found->second;
    };
    if (const auto type = protocol::typeNamed(value("type").toStdString())) reading.type = *type;
    if (protocol::findGrayscale(value("direction").toStdString())) reading.direction = value("direction");
    reading.address = link::addressIn(link::bytes(value("address")));
    reading.at = QDateTime::fromString(value("time"), Qt::ISODate);
}

files::Result<PixelReading> loadCsv(const QString& path, link::InstrumentType type)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Failure{QStringLiteral("%1 cannot be read: %2.").arg(path, file.errorString()).toStdString()};
    if (file.size() > kLargestText) return notPixels(path, QStringLiteral("it is larger than 4 MB"));
    const auto lines = QString::fromUtf8(file.readAll()).split(u'\n');
    std::map<QString, QString> head;
    qsizetype number = -1;
    qsizetype brightness = -1;
    Collected pixels;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const auto line = lines[i].trimmed();
        if (line.startsWith(u'#')) takeFromHead(line, head);
        if (line.isEmpty() || line.startsWith(u'#')) continue;
        const auto cells = line.split(u',');
        if (number < 0) {
            number = cells.indexOf(QLatin1String("sn"));
            brightness = cells.indexOf(QLatin1String("hd"));
            if (number < 0 || brightness < 0)
                return notPixels(path, QStringLiteral("it has no header row with \"sn\" and \"hd\""));
            continue;
        }
        const auto pixel = numberIn(cells.value(number));
        const auto cell = cells.value(brightness);
        const auto value =
            cell.isEmpty() && cells.size() > brightness ? std::optional(kDamaged) : numberIn(cell);
        if (!pixel || !value || !pixels.add(*pixel, *value))
            return notPixels(path, QStringLiteral("line %1 is not a pixel of its own").arg(i + 1));
    }
    auto whole = wholeOf(path, pixels);
    if (!whole) return whole;
    whole->type = type;
    describe(*whole, head);
    return whole;
}

bool isDatabaseName(const QString& path) { return path.endsWith(QLatin1String(".mdb"), Qt::CaseInsensitive); }

} // namespace

QString saveReading(const QString& path, const PixelReading& reading)
{
    if (isDatabaseName(path)) return savePixels(path, roundedArray(reading));
    const auto written = files::replaceContent(QFileInfo(path).filesystemFilePath(), csvOf(reading));
    return written ? QString() : QString::fromStdString(written.error());
}

files::Result<PixelReading> loadReading(const QString& path, link::InstrumentType type)
{
    auto loaded = isDatabaseName(path) ? loadDatabase(path) : loadCsv(path, type);
    if (!loaded) return loaded;
    if (isDatabaseName(path)) loaded->type = type;
    loaded->file = path;
    return loaded;
}

} // namespace quorvel::grayscale
