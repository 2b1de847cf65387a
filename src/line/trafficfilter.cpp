#include "line/trafficfilter.h"

namespace quorvel::line {

void TrafficFilter::setReadout(std::optional<int> address)
{
    address_ = address;
    invalidateFilter();
}

void TrafficFilter::setVerdict(std::optional<protocol::Verdict> verdict)
{
    verdict_ = verdict;
    invalidateFilter();
}

void TrafficFilter::setKind(std::optional<link::Kind> kind)
{
    kind_ = kind;
    invalidateFilter();
}

// A line that still waits for its reply is shown whatever outcome is asked for.
bool TrafficFilter::filterAcceptsRow(int row, const QModelIndex& /*parent*/) const
{
    const auto& line = static_cast<const TrafficModel*>(sourceModel())->line(row);
    const auto& exchange = line.exchange;
    if (address_ && protocol::addressOf(exchange.transaction.frame) != *address_) return false;
    if (kind_ && exchange.transaction.kind != *kind_) return false;
    return !verdict_ || line.pending || protocol::verdictOf(exchange) == *verdict_;
}

} // namespace quorvel::line
