#include "site/sitemodel.h"

#include "link/address.h"
#include "link/bytes.h"
#include "site/limittext.h"

#include <algorithm>

namespace quorvel::site {

namespace {

bool isLimitColumn(int column)
{
    return column >= SiteModel::LimitXColumn && column <= SiteModel::LimitZ2Column;
}

bool isEditable(int column)
{
    return column == SiteModel::AddressColumn || column == SiteModel::NameColumn ||
           column == SiteModel::TypeColumn || column == SiteModel::ReferenceColumn || isLimitColumn(column);
}

protocol::Sensor sensorOfLimit(int column)
{
    return kSensors.at(static_cast<std::size_t>(column - SiteModel::LimitXColumn));
}

} // namespace

SiteModel::SiteModel(link::Clock& clock, std::function<LineState(int)> line, QObject* parent)
    : QAbstractTableModel(parent), clock_(clock), line_(std::move(line))
{}

int SiteModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(site_.readouts.size());
}

int SiteModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kColumns; }

Qt::ItemFlags SiteModel::flags(const QModelIndex& index) const
{
    auto flags = QAbstractTableModel::flags(index);
    if (!index.isValid()) return flags;
    const bool lacks = isLimitColumn(index.column()) &&
                       !site::hasSensor(readout(index.row()).type, sensorOfLimit(index.column()));
    if (isEditable(index.column()) && !lacks) flags |= Qt::ItemIsEditable;
    return flags;
}

bool SiteModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable)) return false;
    auto& readout = site_.readouts[static_cast<std::size_t>(index.row())];
    const auto text = value.toString();
    if (text == data(index, Qt::EditRole).toString()) return false;
    const int column = index.column();
    bool taken = true;
    if (column == AddressColumn) {
        taken = setAddress(readout, value);
    } else if (column == TypeColumn) {
        taken = setType(readout, text);
    } else if (isLimitColumn(column)) {
        taken = setLimit(readout, sensorOfLimit(column), text);
    } else {
        (column == NameColumn ? readout.name : readout.reference) = text.simplified();
    }
    if (!taken) return false;
    rowChanged(index.row());
    Q_EMIT edited();
    return true;
}

bool SiteModel::setAddress(Readout& readout, const QVariant& value)
{
    bool isNumber = false;
    const int address = value.toString().trimmed().toInt(&isNumber);
    if (!isNumber || !link::isAddress(address)) {
        Q_EMIT refused(tr("An address is a whole number from 1 to 249."));
        return false;
    }
    if (site_.readoutAt(address)) {
        Q_EMIT refused(tr("The site has a readout with the address %1 already.").arg(address));
        return false;
    }
    readout.address = address;
    return true;
}

bool SiteModel::setLimit(Readout& readout, protocol::Sensor sensor, const QString& text)
{
    const auto limit = limitOf(text);
    if (!limit) {
        Q_EMIT refused(
            tr("\"%1\" is not a limit. Write %2; nothing for none.").arg(text, QLatin1String(kLimitForm)));
        return false;
    }
    readout.limit(sensor) = *limit;
    return true;
}

bool SiteModel::setType(Readout& readout, const QString& letter)
{
    const auto type = protocol::typeNamed(letter.trimmed().toUpper().toStdString());
    if (!type) {
        Q_EMIT refused(tr("The type of a readout is A, B, C or D."));
        return false;
    }
    readout.type = *type;
    // The file takes no limit of a sensor that is not there, and no value of one is shown.
    for (const auto sensor : kSensors) {
        if (site::hasSensor(readout.type, sensor)) continue;
        readout.limit(sensor) = {};
        held_[readout.address].received.at(placeOf(sensor)).reset();
    }
    return true;
}

void SiteModel::setSite(Site site)
{
    beginResetModel();
    site_ = std::move(site);
    track_ = {};
    held_.clear();
    endResetModel();
}

void SiteModel::setTexts(const QString& name, const QString& port, const QString& note)
{
    site_.name = name;
    site_.port = port;
    site_.note = note;
    Q_EMIT edited();
}

int SiteModel::addReadout()
{
    int highest = 0;
    for (const auto& readout : site_.readouts)
        highest = std::max(highest, readout.address);
    int address = highest + 1;
    if (!link::isAddress(address)) {
        for (address = link::kLowestAddress; site_.readoutAt(address);)
            ++address;
    }
    if (!link::isAddress(address)) return -1;
    const int row = rowCount();
    beginInsertRows({}, row, row);
    Readout added;
    added.address = address;
    site_.readouts.push_back(added);
    endInsertRows();
    Q_EMIT edited();
    return row;
}

void SiteModel::removeReadout(int row)
{
    beginRemoveRows({}, row, row);
    site_.readouts.erase(site_.readouts.begin() + row);
    endRemoveRows();
    Q_EMIT edited();
}

bool SiteModel::hasSensor(protocol::Sensor sensor) const
{
    return std::any_of(site_.readouts.begin(), site_.readouts.end(),
                       [sensor](const Readout& readout) { return site::hasSensor(readout.type, sensor); });
}

int SiteModel::rowOf(int address) const
{
    const auto* found = site_.readoutAt(address);
    return found ? static_cast<int>(found - site_.readouts.data()) : -1;
}

const Held& SiteModel::held(int row) const
{
    static const Held kNothing;
    const auto found = held_.find(readout(row).address);
    return found == held_.end() ? kNothing : found->second;
}

void SiteModel::take(const Reading& reading)
{
    const int row = rowOf(reading.address);
    if (row < 0) return; // removed while it was asked
    track_.take(reading);
    auto& held = held_[reading.address];
    held.outcome = QString::fromStdString(reading.outcome);
    held.failed = !reading.complete();
    for (const auto sensor : kSensors) {
        const auto& received = reading.received.at(placeOf(sensor));
        if (!received) continue;
        held.received.at(placeOf(sensor)) = received;
        held.time = reading.time;
    }
    rowChanged(row);
}

void SiteModel::takeClock(int address, const QString& words, const std::optional<double>& seconds)
{
    auto& held = held_[address];
    held.clock = words;
    held.clockSeconds = seconds;
    if (const int row = rowOf(address); row >= 0) rowChanged(row);
}

void SiteModel::markZero()
{
    track_.markZero();
    if (rowCount() == 0) return;
    Q_EMIT dataChanged(index(0, SinceZeroColumn), index(rowCount() - 1, SinceZeroColumn));
}

void SiteModel::refreshAges()
{
    if (rowCount() == 0) return;
    Q_EMIT dataChanged(index(0, AgeColumn), index(rowCount() - 1, AgeColumn));
    Q_EMIT dataChanged(index(0, LineColumn), index(rowCount() - 1, LineColumn));
}

void SiteModel::rowChanged(int row) { Q_EMIT dataChanged(index(row, 0), index(row, kColumns - 1)); }

} // namespace quorvel::site
