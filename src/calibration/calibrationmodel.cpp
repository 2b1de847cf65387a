#include "calibration/calibrationmodel.h"

#include "link/bytes.h"
#include "text/number.h"

#include <QFont>

#include <cmath>
#include <variant>

namespace quorvel::calibration {

CalibrationModel::CalibrationModel(Records& records, QObject* parent)
    : QAbstractTableModel(parent), records_(records)
{}

void CalibrationModel::reset()
{
    beginResetModel();
    unwritten_.clear();
    endResetModel();
}

int CalibrationModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : records_.rowCount();
}

int CalibrationModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(records_.fields().size());
}

const jet::FieldDef& CalibrationModel::field(int column) const
{
    return records_.fields()[static_cast<std::size_t>(column)];
}

const std::optional<double>* CalibrationModel::unwrittenAt(const QModelIndex& index) const
{
    const auto row = unwritten_.find(index.row());
    if (row == unwritten_.end()) return nullptr;
    const auto found = row->second.find(field(index.column()).name);
    return found == row->second.end() ? nullptr : &found->second;
}

QString CalibrationModel::textAt(const QModelIndex& index) const
{
    if (const auto* number = unwrittenAt(index)) {
        return number->has_value() ? link::shown(text::general(static_cast<float>(**number))) : QString();
    }
    const auto& value = records_.value(index.row(), index.column());
    if (const auto* number = std::get_if<float>(&value.held())) return link::shown(text::general(*number));
    return QString::fromStdString(value.text());
}

QVariant CalibrationModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount()) return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return textAt(index);
    case Qt::TextAlignmentRole:
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    case Qt::FontRole: {
        QFont font;
        font.setItalic(true);
        return unwrittenAt(index) ? font : QVariant();
    }
    case Qt::ToolTipRole:
        return unwrittenAt(index) ? tr("Not written to the file yet") : QVariant();
    default:
        return {};
    }
}

QVariant CalibrationModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool known = section >= 0 && section < columnCount();
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal || !known) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    return QString::fromStdString(field(section).name);
}

bool CalibrationModel::takesNumbers(int column) const
{
    const auto type = field(column).type;
    return records_.readOnlyBecause().empty() && column != kNumberColumn &&
           (type == jet::FieldType::Single || type == jet::FieldType::Double);
}

Qt::ItemFlags CalibrationModel::flags(const QModelIndex& index) const
{
    auto flags = QAbstractTableModel::flags(index);
    flags.setFlag(Qt::ItemIsEditable, index.isValid() && takesNumbers(index.column()));
    return flags;
}

void CalibrationModel::tell(const QString& words)
{
    if (words.isEmpty() && !troubleTold_) return;
    troubleTold_ = !words.isEmpty();
    Q_EMIT told(words);
}

bool CalibrationModel::refuse(const QModelIndex& index, const QString& text)
{
    const auto old = textAt(index);
    tell(tr("\"%1\" is not a number and was not taken: %2. A number is written like -1.25.")
             .arg(text, old.isEmpty() ? tr("the cell stays empty") : tr("%1 stays").arg(old)));
    return false;
}

bool CalibrationModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !index.isValid()) return false;
    const auto text = value.toString().trimmed();
    if (!takesNumbers(index.column())) {
        const auto& because = records_.readOnlyBecause();
        tell(because.empty() ? tr("This column takes no numbers.") : QString::fromStdString(because));
        return false;
    }
    if (text == textAt(index)) return true;
    std::optional<double> number;
    if (!text.isEmpty()) {
        const auto typed = link::bytes(text);
        number = text::Val(typed);
        if (!text::isNumber(typed) || !std::isfinite(static_cast<float>(*number))) return refuse(index, text);
    }
    unwritten_[index.row()][field(index.column()).name] = number;
    Q_EMIT dataChanged(index, index);
    submit();
    return true;
}

bool CalibrationModel::submit()
{
    const auto columns = columnCount();
    const bool written = writeAll();
    if (columnCount() != columns) {
        beginResetModel();
        endResetModel();
    }
    return written;
}

// Qt submits after every editor, also after a text that was refused: what was told of it stays then.
bool CalibrationModel::writeAll()
{
    if (!hasUnwritten()) return true;
    while (hasUnwritten()) {
        const auto [row, changes] = *unwritten_.begin();
        if (const auto written = records_.write(row, changes); !written) {
            tell(tr("Not written yet; the next step tries again: %1")
                     .arg(QString::fromStdString(written.error())));
            return false;
        }
        unwritten_.erase(row);
        Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
    }
    tell(QString());
    return true;
}

} // namespace quorvel::calibration
