// What the cells of the site's table show: texts, colours, and what they are sorted by.

#include "chart/colours.h"
#include "link/bytes.h"
#include "site/limittext.h"
#include "site/sitemodel.h"
#include "text/duration.h"
#include "text/number.h"

#include <QFont>
#include <QGuiApplication>
#include <QPalette>

#include <cmath>

namespace quorvel::site {

namespace {

using link::shown;
using protocol::Sensor;

constexpr double kMsPerS = 1000;
constexpr double kPercent = 100;
constexpr int kFaded = 150; // of 255: of old values, which stay easy to read

struct Heading {
    const char* caption;
    const char* hint;
};
constexpr Heading kHeadings[] = {
    {"Address", "1 to 249; double click or F2 edits"},
    {"Name", "double click or F2 edits"},
    {"Type", "A, B, C or D; double click or F2 edits"},
    {"X mm", "as received"},
    {"Y mm", "as received"},
    {"Z1 mm", "as received"},
    {"Z2 mm", "as received"},
    {"Age", "since the values were received"},
    {"Answer", "how the latest sweep ended"},
    {"Limits", "whether the values are within the limits"},
    {"Since before", "change in mm since the latest value before"},
    {"Since zero", "change in mm since \"Mark Zero\" was pressed"},
    {"Line", "answers that were whole, of all questions since the start of the program, and their mean time"},
    {"Clock", "readout minus this machine, asked for by \"Ask Clocks\""},
    {"Limit X", "mm: \"-2 to 2\", \"-2 to\", \"to 2\" or \"+-2\"; double click or F2 edits"},
    {"Limit Y", "mm: \"-2 to 2\", \"-2 to\", \"to 2\" or \"+-2\"; double click or F2 edits"},
    {"Limit Z1", "mm: \"-2 to 2\", \"-2 to\", \"to 2\" or \"+-2\"; double click or F2 edits"},
    {"Limit Z2", "mm: \"-2 to 2\", \"-2 to\", \"to 2\" or \"+-2\"; double click or F2 edits"},
    {"Reference", "note on what the readings refer to; double click or F2 edits"},
};
static_assert(std::size(kHeadings) == SiteModel::kColumns);

std::optional<Sensor> sensorAt(int column, int first)
{
    const int place = column - first;
    if (place < 0 || place >= static_cast<int>(kSensorCount)) return std::nullopt;
    return kSensors.at(static_cast<std::size_t>(place));
}
std::optional<Sensor> sensorOfValue(int column) { return sensorAt(column, SiteModel::XColumn); }

/// A change with as many decimals as the value that was received.
QString signedMm(double mm, const std::optional<std::string>& received)
{
    const auto point = received ? received->find('.') : std::string::npos;
    const auto decimals = point == std::string::npos ? 0 : received->size() - point - 1;
    const auto digits = text::format(mm, decimals > 0 ? "0." + std::string(decimals, '0') : std::string("0"));
    return shown(mm < 0 ? digits : "+" + digits);
}

QVariant keyOf(const std::optional<double>& value) { return value ? QVariant(*value) : QVariant(); }

QVariant magnitudeOf(const std::optional<double>& value)
{
    return value ? QVariant(std::abs(*value)) : QVariant();
}

} // namespace

QVariant SiteModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumns) return {};
    if (role == Qt::DisplayRole) return tr(kHeadings[section].caption);
    if (role == Qt::ToolTipRole || role == Qt::AccessibleDescriptionRole) return tr(kHeadings[section].hint);
    return {};
}

QVariant SiteModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) return {};
    const int row = index.row();
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return text(row, column);
    case kSortRole:
        return sortKey(row, column);
    case Qt::ForegroundRole:
        return colour(row, column);
    case Qt::FontRole:
        return look(row, column);
    case Qt::ToolTipRole:
        return hint(row, column);
    case Qt::AccessibleTextRole:
        return spoken(row, column);
    case Qt::TextAlignmentRole:
        if (sensorOfValue(column)) return {Qt::AlignRight | Qt::AlignVCenter};
        return {};
    default:
        return {};
    }
}

QString SiteModel::text(int row, int column) const
{
    const auto& readout = this->readout(row);
    if (const auto sensor = sensorOfValue(column)) {
        const auto& received = held(row).received.at(placeOf(*sensor));
        return received ? shown(*received) : QString();
    }
    if (const auto sensor = sensorAt(column, LimitXColumn)) return limitText(readout.limit(*sensor));
    switch (column) {
    case AddressColumn:
        return QString::number(readout.address);
    case NameColumn:
        return readout.name;
    case TypeColumn:
        return shown(protocol::nameOf(readout.type));
    case SinceBeforeColumn:
    case SinceZeroColumn:
        return changeText(row, column == SinceZeroColumn);
    case AgeColumn: {
        const auto seconds = ageSeconds(row);
        return seconds ? shown(text::duration(*seconds)) : QString();
    }
    case AnswerColumn:
        return held(row).outcome.isEmpty() ? tr("not asked yet") : held(row).outcome;
    case LimitColumn:
        return limitWords(row);
    case LineColumn:
        return lineWords(row);
    case ClockColumn:
        return held(row).clock;
    case ReferenceColumn:
        return readout.reference;
    default:
        return {};
    }
}

QVariant SiteModel::sortKey(int row, int column) const
{
    if (const auto sensor = sensorOfValue(column)) return keyOf(mm(row, *sensor));
    switch (column) {
    case AddressColumn:
        return readout(row).address;
    case SinceBeforeColumn:
    case SinceZeroColumn:
        return keyOf(largestChange(row, column == SinceZeroColumn));
    case AgeColumn:
        return keyOf(ageSeconds(row));
    case LimitColumn: // those that pass come first
        return QString(passesLimit(row) ? QStringLiteral("0") : QStringLiteral("1")) + limitWords(row);
    case LineColumn: {
        const auto line = line_ ? line_(readout(row).address) : LineState();
        if (line.asked == 0) return {};
        return static_cast<double>(line.answered) / static_cast<double>(line.asked);
    }
    case ClockColumn:
        return magnitudeOf(held(row).clockSeconds);
    default:
        return text(row, column);
    }
}

std::optional<double> SiteModel::mm(int row, Sensor sensor) const
{
    const auto& received = held(row).received.at(placeOf(sensor));
    return received ? std::optional(text::Val(*received)) : std::nullopt;
}

std::optional<double> SiteModel::ageSeconds(int row) const
{
    const auto& time = held(row).time;
    if (!time.isValid()) return std::nullopt;
    return std::max(0.0, std::floor(static_cast<double>(time.msecsTo(clock_.now())) / kMsPerS));
}

std::optional<double> SiteModel::change(int row, Sensor sensor, bool sinceZero) const
{
    const int address = readout(row).address;
    return sinceZero ? track_.changeSinceZero(address, sensor) : track_.changeSinceBefore(address, sensor);
}

QString SiteModel::changeText(int row, bool sinceZero) const
{
    QStringList words;
    for (const auto sensor : kSensors) {
        const auto mm = change(row, sensor, sinceZero);
        const auto& received = held(row).received.at(placeOf(sensor));
        if (mm) words << shown(protocol::nameOf(sensor)) + u' ' + signedMm(*mm, received);
    }
    return words.join(QStringLiteral("  "));
}

std::optional<double> SiteModel::largestChange(int row, bool sinceZero) const
{
    std::optional<double> largest;
    for (const auto sensor : kSensors) {
        const auto mm = change(row, sensor, sinceZero);
        if (mm) largest = std::max(largest.value_or(0), std::abs(*mm));
    }
    return largest;
}

QString SiteModel::limitWords(int row) const
{
    QStringList passed;
    bool isSet = false;
    bool isKnown = false;
    for (const auto sensor : kSensors) {
        const auto& limit = readout(row).limit(sensor);
        if (!limit.isSet()) continue;
        isSet = true;
        const auto value = mm(row, sensor);
        if (!value) continue;
        isKnown = true;
        const auto words = passedText(limit, *value);
        if (!words.isEmpty()) passed << shown(protocol::nameOf(sensor)) + u' ' + words;
    }
    if (!passed.isEmpty()) return passed.join(QStringLiteral(", "));
    if (!isSet) return tr("none set");
    return isKnown ? tr("within") : QString();
}

bool SiteModel::passesLimit(int row) const
{
    return std::any_of(kSensors.begin(), kSensors.end(), [&](Sensor sensor) {
        const auto value = mm(row, sensor);
        return value && readout(row).limit(sensor).isPassedBy(*value);
    });
}

QString SiteModel::lineWords(int row) const
{
    const auto line = line_ ? line_(readout(row).address) : LineState();
    if (line.asked == 0) return {};
    const auto percent =
        std::floor(kPercent * static_cast<double>(line.answered) / static_cast<double>(line.asked));
    auto words = tr("%1 % of %2").arg(percent).arg(line.asked);
    if (line.answered > 0) words += tr(", %1 ms").arg(line.meanMs, 0, 'f', 0);
    return words;
}

QVariant SiteModel::colour(int row, int column) const
{
    const auto palette = QGuiApplication::palette();
    const auto mark = [&palette] { return chart::coloursOf(palette).of(chart::Role::Mark); };
    if (const auto sensor = sensorOfValue(column)) {
        const auto value = mm(row, *sensor);
        if (value && readout(row).limit(*sensor).isPassedBy(*value)) return mark();
        if (held(row).failed) {
            auto faded = palette.color(QPalette::Text);
            faded.setAlpha(kFaded);
            return faded;
        }
    }
    if (column == LimitColumn && passesLimit(row)) return mark();
    if (column == AnswerColumn && held(row).failed) return mark();
    return {};
}

/// Whether a cell shows values that are older than the latest sweep, or what follows from them.
bool SiteModel::isOld(int row, int column) const
{
    if (!held(row).failed) return false;
    const auto& limits = readout(row).limits;
    const bool judged =
        column == LimitColumn &&
        std::any_of(limits.begin(), limits.end(), [](const Limit& limit) { return limit.isSet(); });
    return judged || column == AgeColumn || sensorOfValue(column).has_value();
}

QVariant SiteModel::look(int row, int column) const
{
    QFont font;
    const auto sensor = sensorOfValue(column);
    const auto value = sensor ? mm(row, *sensor) : std::nullopt;
    font.setItalic(isOld(row, column));
    font.setBold((value && readout(row).limit(*sensor).isPassedBy(*value)) ||
                 (column == LimitColumn && passesLimit(row)));
    return font.italic() || font.bold() ? QVariant(font) : QVariant();
}

QString SiteModel::hint(int row, int column) const
{
    const auto& held = this->held(row);
    if (sensorOfValue(column) && held.time.isValid()) {
        auto words = tr("Received %1.").arg(held.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
        if (held.failed) words += u' ' + tr("The latest sweep ended: %1.").arg(held.outcome);
        return words;
    }
    return text(row, column);
}

QString SiteModel::spoken(int row, int column) const
{
    auto words = text(row, column);
    return words.isEmpty() || column == AgeColumn || !isOld(row, column) ? words : tr("%1, old").arg(words);
}

} // namespace quorvel::site
