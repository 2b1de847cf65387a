#include "settings/settingsmodel.h"

#include "link/bytes.h"
#include "protocol/direction.h"

#include <QColor>
#include <QStringList>

#include <algorithm>

namespace quorvel {

namespace {

using protocol::settings;
using protocol::Told;

constexpr QRgb kDarkText = 0xff000000;
constexpr QRgb kDiffers = 0xffffe9a8;
constexpr QRgb kFailed = 0xffffc9c4;
constexpr QRgb kVerified = 0xffcdeccb;

constexpr auto kNone = "none";

const protocol::Setting& settingAt(int row) { return settings()[static_cast<std::size_t>(row)]; }
int rows() { return static_cast<int>(settings().size()); }

int columnOf(SettingsModel::Side side) { return SettingsModel::NowColumn + static_cast<int>(side); }

bool has(const SettingsModel::Whose& whose, int row)
{
    return !whose.type || settingAt(row).isFor(*whose.type);
}

QString typeName(link::InstrumentType type) { return link::shown(std::string(protocol::nameOf(type))); }

QString shownTold(const Told& told)
{
    return told.value.isNull() ? told.why : protocol::inSentence(told.value);
}

} // namespace

SettingsModel::SettingsModel(QObject* parent)
    : QAbstractTableModel(parent), sendings_(settings().size()), chosen_(settings().size(), false)
{
    for (auto& side : sides_) {
        side.rows.resize(settings().size());
    }
}

int SettingsModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows(); }

int SettingsModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kColumns; }

QVariant SettingsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return text(index.row(), index.column());
    case Qt::CheckStateRole:
        if (index.column() != NameColumn || !whyNot(index.row()).isEmpty()) return {};
        return chosen_[static_cast<std::size_t>(index.row())] ? Qt::Checked : Qt::Unchecked;
    case Qt::BackgroundRole:
    case Qt::ForegroundRole:
        return color(index.row(), index.column(), role);
    default:
        return {};
    }
}

QString SettingsModel::text(int row, int column) const
{
    const auto& sending = sendings_[static_cast<std::size_t>(row)];
    switch (column) {
    case NameColumn:
        return tr(settingAt(row).title);
    case DifferenceColumn:
        return difference(row);
    case BeforeColumn:
        return sending.before;
    case SentColumn:
        return sending.sent;
    case ReadBackColumn:
        return sending.readBack;
    default:
        return sideText(static_cast<Side>(column - NowColumn), row);
    }
}

QString SettingsModel::sideText(Side side, int row) const
{
    const auto& values = sides_[side];
    const auto& told = values.rows[static_cast<std::size_t>(row)];
    const bool empty = told.value.isNull() && told.why.isEmpty();
    return empty && values.whose.type && !has(values.whose, row) ? QString(kNone) : shownTold(told);
}

// The clock goes on, so two of them differ whenever they are read.
bool SettingsModel::differs(Side side, int row) const
{
    const auto& now = sides_[Now].rows[static_cast<std::size_t>(row)].value;
    const auto& other = sides_[side].rows[static_cast<std::size_t>(row)].value;
    return !now.isNull() && !other.isNull() && now != other && QLatin1String(settingAt(row).name) != "clock";
}

QString SettingsModel::difference(int row) const
{
    const auto at = static_cast<std::size_t>(row);
    const auto& now = sides_[Now].rows[at].value;
    const bool file = differs(File, row);
    const bool other = differs(Other, row);
    QStringList words;
    if (file && other) {
        words << tr("File and other readout differ.");
    } else if (file) {
        words << tr("File differs.");
    } else if (other) {
        words << tr("Other readout differs.");
    } else if (now == sides_[source_].rows[at].value && !now.isNull()) {
        words << tr("Same.");
    }
    const bool offered = !sides_[source_].rows[at].value.isNull();
    if (const auto why = whyNot(row); offered && !why.isEmpty()) words << tr("Cannot be set: %1.").arg(why);
    return words.join(u' ');
}

QVariant SettingsModel::color(int row, int column, int role) const
{
    std::optional<QRgb> background;
    const auto& sending = sendings_[static_cast<std::size_t>(row)];
    if (column == DifferenceColumn && (differs(File, row) || differs(Other, row))) background = kDiffers;
    if ((column == FileColumn && differs(File, row)) || (column == OtherColumn && differs(Other, row)))
        background = kDiffers;
    if ((column == SentColumn || column == ReadBackColumn) && sending.ended)
        background = verified(row) ? kVerified : kFailed;
    if (!background) return {};
    return QColor(role == Qt::BackgroundRole ? *background : kDarkText);
}

QString SettingsModel::headerOf(Side side) const
{
    const QString names[] = {tr("Now"), tr("File"), tr("Other Readout")};
    const auto& whose = sides_[side].whose;
    QStringList of;
    if (whose.address != 0) of << tr("readout %1").arg(whose.address);
    if (whose.type) of << tr("type %1").arg(typeName(*whose.type));
    return of.isEmpty() ? names[side] : names[side] + u'\n' + of.join(QStringLiteral(", "));
}

QVariant SettingsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
    case NameColumn:
        return tr("Setting");
    case DifferenceColumn:
        return tr("Difference");
    case BeforeColumn:
        return tr("Before");
    case SentColumn:
        return tr("Sent");
    case ReadBackColumn:
        return tr("Read Back");
    default:
        return section < NameColumn || section >= kColumns ? QVariant()
                                                           : headerOf(static_cast<Side>(section - NowColumn));
    }
}

Qt::ItemFlags SettingsModel::flags(const QModelIndex& index) const
{
    auto flags = QAbstractTableModel::flags(index);
    if (index.isValid() && index.column() == NameColumn && whyNot(index.row()).isEmpty())
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool SettingsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !(flags(index) & Qt::ItemIsUserCheckable)) return false;
    chosen_[static_cast<std::size_t>(index.row())] = value.toInt() == Qt::Checked;
    changed(index.row());
    return true;
}

void SettingsModel::begin(Side side, const Whose& whose)
{
    sides_[side].whose = whose;
    sides_[side].rows.assign(settings().size(), {});
    if (side != Other || source_ == Other) chooseNothing();
    allChanged();
    const int column = columnOf(side);
    Q_EMIT headerDataChanged(Qt::Horizontal, column, column);
}

void SettingsModel::put(Side side, int row, const Told& told)
{
    sides_[side].rows[static_cast<std::size_t>(row)] = told;
    changed(row);
}

QStringList SettingsModel::setFile(const protocol::SettingsFile& file)
{
    begin(File, {file.address, file.type});
    auto names = file.settings.keys();
    for (int row = 0; row < rows(); ++row) {
        const auto* name = settingAt(row).name;
        if (names.removeOne(QLatin1String(name)))
            put(File, row, {file.settings.value(QLatin1String(name)), {}});
    }
    return names;
}

QJsonObject SettingsModel::values(Side side) const
{
    QJsonObject all;
    for (int row = 0; row < rows(); ++row) {
        const auto& value = sides_[side].rows[static_cast<std::size_t>(row)].value;
        if (!value.isNull()) all.insert(QLatin1String(settingAt(row).name), value);
    }
    return all;
}

QStringList SettingsModel::unread(Side side) const
{
    QStringList all;
    for (int row = 0; row < rows(); ++row) {
        const auto& values = sides_[side];
        if (has(values.whose, row) && values.rows[static_cast<std::size_t>(row)].value.isNull())
            all << tr(settingAt(row).title);
    }
    return all;
}

bool SettingsModel::concerns(int row) const
{
    return std::any_of(sides_.begin(), sides_.end(), [row](const Values& side) {
        const bool ofItsType = side.whose.type && has(side.whose, row);
        return ofItsType || !side.rows[static_cast<std::size_t>(row)].value.isNull();
    });
}

void SettingsModel::setSource(Side side)
{
    source_ = side;
    chooseNothing();
}

QString SettingsModel::whyNot(int row) const
{
    const auto value = wanted(row);
    if (value.isNull()) return tr("no value");
    const auto& setting = settingAt(row);
    const auto& type = sides_[Now].whose.type;
    if (type && !setting.isFor(*type))
        return tr("a readout of type %1 has no such setting").arg(typeName(*type));
    const auto command = setting.write("01", value);
    const auto* why = std::get_if<protocol::NotSent>(&command);
    if (!why) return {};
    if (*why == protocol::NotSent::ForTheRecord) return tr(setting.kept);
    return tr("%1 is not a valid value").arg(protocol::inSentence(value));
}

void SettingsModel::chooseWhatDiffers()
{
    for (int row = 0; row < rows(); ++row) {
        chosen_[static_cast<std::size_t>(row)] = differs(source_, row) && whyNot(row).isEmpty();
    }
    allChanged();
}

void SettingsModel::chooseNothing()
{
    chosen_.assign(settings().size(), false);
    allChanged();
}

std::vector<int> SettingsModel::chosen() const
{
    std::vector<int> all;
    for (int row = 0; row < rows(); ++row) {
        if (chosen_[static_cast<std::size_t>(row)]) all.push_back(row);
    }
    return all;
}

QJsonValue SettingsModel::wanted(int row) const
{
    return sides_[source_].rows[static_cast<std::size_t>(row)].value;
}

void SettingsModel::beginSending()
{
    sendings_.assign(settings().size(), {});
    allChanged();
}

void SettingsModel::putBefore(int row, const Told& told)
{
    sendings_[static_cast<std::size_t>(row)].before = shownTold(told);
    put(Now, row, told);
}

void SettingsModel::putSent(int row, const QString& why)
{
    auto& sending = sendings_[static_cast<std::size_t>(row)];
    sending.value = wanted(row);
    sending.confirmed = why.isEmpty();
    sending.ended = !sending.confirmed;
    sending.sent = sending.confirmed ? protocol::inSentence(sending.value) : why;
    changed(row);
}

void SettingsModel::putReadBack(int row, const Told& told)
{
    auto& sending = sendings_[static_cast<std::size_t>(row)];
    sending.held = told.value;
    sending.ended = true;
    sending.readBack = shownTold(told);
    if (!told.value.isNull() && told.value != sending.value) sending.readBack += tr(" - not what was sent");
    put(Now, row, told);
}

bool SettingsModel::verified(int row) const
{
    const auto& sending = sendings_[static_cast<std::size_t>(row)];
    return sending.confirmed && !sending.held.isNull() && sending.held == sending.value;
}

int SettingsModel::verifiedCount() const
{
    int count = 0;
    for (int row = 0; row < rows(); ++row) {
        if (verified(row)) ++count;
    }
    return count;
}

void SettingsModel::changed(int row) { Q_EMIT dataChanged(index(row, 0), index(row, kColumns - 1)); }

void SettingsModel::allChanged() { Q_EMIT dataChanged(index(0, 0), index(rows() - 1, kColumns - 1)); }

} // namespace quorvel
