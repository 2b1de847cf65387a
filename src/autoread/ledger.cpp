#include "autoread/ledger.h"

#include "text/number.h"

#include <algorithm>

namespace quorvel::autoread {

// A ring that begins elsewhere than before has lost its oldest records or was cleared; what is in an older file is
// then no longer counted.
void Ledger::seen(const std::string& address, const RecordSpan& span)
{
    const auto known = entries_.find(address);
    const bool same = known != entries_.end() && known->second.span.first == span.first &&
                      known->second.downloadedEnd <= span.end;
    entries_[address] = {span, same ? known->second.downloadedEnd : span.first};
}

void Ledger::downloaded(const std::string& address, int end)
{
    const auto known = entries_.find(address);
    if (known == entries_.end()) return;
    known->second.downloadedEnd = std::max(known->second.downloadedEnd, end);
}

void Ledger::deleted(const std::string& address) { entries_[address] = {}; }

int Ledger::missing(const std::string& address) const
{
    const auto known = entries_.find(address);
    return known == entries_.end() ? -1 : known->second.span.end - known->second.downloadedEnd;
}

std::string Ledger::text(const std::string& address) const
{
    const auto readout = "Readout " + address;
    const int left = missing(address);
    if (left < 0)
        return "The records stored in readout " + address + " have not been downloaded in this window.";
    const int total = entries_.at(address).span.count();
    if (total == 0) return readout + " held no records when it was last asked.";
    if (left == 0) {
        return "All " + text::general(total) + " records that readout " + address +
               " held when it was last asked have been downloaded.";
    }
    return readout + " holds " + text::general(left) + " records that this window has not downloaded.";
}

} // namespace quorvel::autoread
