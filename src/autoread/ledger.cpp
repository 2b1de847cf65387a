#include "autoread/ledger.h"

#include "text/number.h"

#include <algorithm>

namespace quorvel::autoread {

namespace {

/// A ring keeps one slot free, or none.
bool isFull(const protocol::RingPointers& pointers)
{
    return protocol::spanOf(pointers).count() >= pointers.capacity - 1;
}

/// Only a full ring loses its oldest record to a new one; any other that begins elsewhere was cleared.
bool isSameRing(const protocol::RingPointers& before, const protocol::RingPointers& now)
{
    return before.capacity == now.capacity && (before.first == now.first || isFull(now));
}

/// Intervals are whole seconds, so a readout takes at most one reading a second.
bool mayHaveGoneRound(const protocol::RingPointers& now, std::int64_t seconds)
{
    return isFull(now) && (seconds < 0 || seconds >= now.capacity - 1);
}

} // namespace

void Ledger::seen(const std::string& address, const protocol::RingPointers& pointers, std::int64_t seconds)
{
    auto& entry = entries_[address];
    const auto capacity = static_cast<std::size_t>(pointers.capacity);
    if (!isSameRing(entry.pointers, pointers)) {
        entry.inFile.assign(capacity, false);
        entry.upTo = false;
    } else if (mayHaveGoneRound(pointers, seconds - entry.askedAt)) {
        entry.upTo |= std::find(entry.inFile.begin(), entry.inFile.end(), true) != entry.inFile.end();
        entry.inFile.assign(capacity, false);
    } else {
        for (int slot = entry.pointers.next; (slot - pointers.next) % pointers.capacity != 0; ++slot) {
            entry.inFile[static_cast<std::size_t>(slot) % capacity] = false;
        }
    }
    entry.pointers = pointers;
    entry.askedAt = seconds;
}

void Ledger::downloaded(const std::string& address, const protocol::RecordSpan& span, int recordCount)
{
    const auto known = entries_.find(address);
    if (known == entries_.end() || protocol::spanOf(known->second.pointers) != span) return;
    known->second.inFile[static_cast<std::size_t>(span.indexOf(recordCount))] = true;
}

void Ledger::deleted(const std::string& address) { entries_[address] = {}; }

void Ledger::forget(const std::string& address) { entries_.erase(address); }

int Ledger::missing(const std::string& address) const
{
    const auto known = entries_.find(address);
    if (known == entries_.end()) return -1;
    const auto span = protocol::spanOf(known->second.pointers);
    int missing = 0;
    for (int count = span.first; count < span.end; ++count) {
        if (!known->second.inFile[static_cast<std::size_t>(span.indexOf(count))]) ++missing;
    }
    return missing;
}

std::string Ledger::text(const std::string& address) const
{
    const auto readout = "Readout " + address;
    const int left = missing(address);
    if (left < 0)
        return "The records stored in readout " + address + " have not been downloaded in this window.";
    const auto& entry = entries_.at(address);
    const int total = protocol::spanOf(entry.pointers).count();
    if (total == 0) return readout + " held no records when it was last asked.";
    if (left == 0) {
        return "All " + text::general(total) + " records that readout " + address +
               " held when it was last asked have been downloaded.";
    }
    return readout + " holds " + (entry.upTo ? "up to " : "") + text::general(left) +
           " records that this window has not downloaded.";
}

} // namespace quorvel::autoread
