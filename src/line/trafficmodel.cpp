#include "line/trafficmodel.h"

#include "line/trace.h"
#include "link/bytes.h"
#include "protocol/answer.h"

#include <algorithm>
#include <iterator>

namespace quorvel::line {

namespace {

constexpr int kFlushInterval = 1;    // ms: within the pause before a frame, where no character waits for it
constexpr int kDroppedAtOnce = 1000; // lines; moving the rows up one by one would be slow
constexpr int kEveryReadout = 255;

constexpr const char* kHeadings[] = {"Time",  "Readout", "Meaning",  "Frame",
                                     "Reply", "Outcome", "First ms", "Last ms"};

QString readoutOf(const link::Exchange& exchange)
{
    const int address = protocol::addressOf(exchange.transaction.frame);
    if (address < 0) return {};
    return address == kEveryReadout ? TrafficModel::tr("all") : QString::number(address);
}

QString milliseconds(const std::optional<double>& ms)
{
    return ms ? QString::number(*ms, 'f', 1) : QString();
}

} // namespace

TrafficModel::TrafficModel(QObject* parent) : QAbstractTableModel(parent)
{
    idle_.setSingleShot(true);
    idle_.setInterval(kFlushInterval);
    connect(&idle_, &QTimer::timeout, this, &TrafficModel::flush);
}

void TrafficModel::sending(const link::Exchange& exchange) { queue(exchange, true); }

void TrafficModel::ended(const link::Exchange& exchange) { queue(exchange, false); }

void TrafficModel::queue(const link::Exchange& exchange, bool pending)
{
    if (paused_) return;
    if (queued_.empty() || queued_.back().exchange.number != exchange.number) queued_.emplace_back();
    queued_.back() = {exchange, pending};
    queued_.back().exchange.discarded.clear(); // not shown
    if (!idle_.isActive()) idle_.start();
}

void TrafficModel::flush()
{
    idle_.stop();
    auto next = queued_.begin();
    if (next != queued_.end() && complete(*next)) ++next;
    if (next != queued_.end()) append(next);
    queued_.clear();
    dropOldest();
}

/// The end of the exchange in the last row.
bool TrafficModel::complete(const TrafficLine& line)
{
    if (lines_.empty() || lines_.back().exchange.number != line.exchange.number) return false;
    characters_ += line.exchange.reply.size() - lines_.back().exchange.reply.size();
    lines_.back() = line;
    const int row = rowCount() - 1;
    Q_EMIT dataChanged(index(row, 0), index(row, kColumns - 1));
    return true;
}

void TrafficModel::append(const std::deque<TrafficLine>::iterator& from)
{
    const int count = static_cast<int>(std::distance(from, queued_.end()));
    beginInsertRows({}, rowCount(), rowCount() + count - 1);
    for (auto line = from; line != queued_.end(); ++line)
        characters_ += line->exchange.reply.size();
    lines_.insert(lines_.end(), std::make_move_iterator(from), std::make_move_iterator(queued_.end()));
    endInsertRows();
}

void TrafficModel::dropOldest()
{
    const int over = rowCount() - kMostLines;
    int dropped = over > 0 ? std::min(rowCount(), over + kDroppedAtOnce - 1) : 0;
    for (int row = 0; row < dropped; ++row)
        characters_ -= line(row).exchange.reply.size();
    while (characters_ > kMostCharacters)
        characters_ -= line(dropped++).exchange.reply.size();
    if (dropped == 0) return;
    beginRemoveRows({}, 0, dropped - 1);
    lines_.erase(lines_.begin(), lines_.begin() + dropped);
    endRemoveRows();
}

void TrafficModel::clear()
{
    beginResetModel();
    lines_.clear();
    queued_.clear();
    characters_ = 0;
    endResetModel();
}

int TrafficModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

int TrafficModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kColumns; }

QString TrafficModel::text(const TrafficLine& line, int column) const
{
    const auto& exchange = line.exchange;
    switch (column) {
    case Time:
        return exchange.begun.toString(QStringLiteral("HH:mm:ss.zzz"));
    case Readout:
        return readoutOf(exchange);
    case Meaning:
        return link::shown(protocol::meaningOf(exchange.transaction.frame));
    case Frame:
        return link::shown(protocol::printable(exchange.transaction.frame));
    case Reply:
        return link::shown(protocol::printable(exchange.reply));
    case Outcome:
        return line.pending ? tr("waiting ...") : link::shown(protocol::outcomeOf(exchange));
    case First:
        return milliseconds(firstCharacterMs(exchange));
    case Last:
        return milliseconds(lastCharacterMs(exchange));
    default:
        return {};
    }
}

QVariant TrafficModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) return {};
    if (role == Qt::DisplayRole) return text(line(index.row()), index.column());
    if (role == Qt::TextAlignmentRole && index.column() >= First)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant TrafficModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section < 0 || section >= kColumns)
        return {};
    return tr(kHeadings[section]);
}

} // namespace quorvel::line
