#include "autoread/book.h"

#include "files/name.h"
#include "link/address.h"
#include "text/number.h"

#include <algorithm>

namespace quorvel::autoread {

namespace {

namespace fs = std::filesystem;

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

/// The same file by whatever way it was named.
fs::path oneName(const fs::path& file)
{
    std::error_code error;
    auto name = fs::weakly_canonical(file, error);
    return error ? file : name;
}

int countIn(const std::vector<bool>& slots, const protocol::RecordSpan& span)
{
    int count = 0;
    for (int place = span.first; place < span.end; ++place) {
        if (slots[static_cast<std::size_t>(span.indexOf(place))]) ++count;
    }
    return count;
}

} // namespace

void Book::forgetSlots(Entry& entry)
{
    const auto holdsAny = [](const auto& file) {
        return std::ranges::find(file.second.slots, true) != file.second.slots.end();
    };
    entry.upTo = entry.upTo || std::ranges::any_of(entry.files, holdsAny);
    entry.files.clear();
}

void Book::asked(int address, const protocol::RingPointers& pointers, std::int64_t seconds)
{
    if (!link::isAddress(address)) return;
    auto& entry = entries_[address];
    const auto capacity = static_cast<std::size_t>(pointers.capacity);
    if (!entry.known || !isSameRing(entry.pointers, pointers)) {
        entry.files.clear();
        entry.upTo = false;
    } else if (mayHaveGoneRound(pointers, seconds - entry.askedAt)) {
        forgetSlots(entry);
    } else {
        for (int slot = entry.pointers.next; (slot - pointers.next) % pointers.capacity != 0; ++slot) {
            for (auto& [file, held] : entry.files) {
                held.slots[static_cast<std::size_t>(slot) % capacity] = false;
            }
        }
    }
    entry.known = true;
    entry.pointers = pointers;
    entry.askedAt = seconds;
    entry.deletion.clear();
}

void Book::began(const fs::path& file)
{
    for (auto& [address, entry] : entries_) {
        entry.files.erase(oneName(file));
    }
}

void Book::stored(int address, const fs::path& file, const protocol::RecordSpan& span, int recordCount)
{
    const auto known = entries_.find(address);
    if (known == entries_.end() || !known->second.known ||
        protocol::spanOf(known->second.pointers).capacity != span.capacity)
        return;
    auto& held = known->second.files[oneName(file)];
    held.slots.resize(static_cast<std::size_t>(span.capacity), false);
    held.slots[static_cast<std::size_t>(span.indexOf(recordCount))] = true;
    if (const auto stamp = stampOf(file)) held.stamp = *stamp;
}

void Book::finished(const fs::path& file)
{
    const auto stamp = stampOf(file);
    for (auto& [address, entry] : entries_) {
        const auto held = entry.files.find(oneName(file));
        if (held != entry.files.end() && stamp) held->second.stamp = *stamp;
    }
}

void Book::checked(const CheckResult& result, std::int64_t seconds)
{
    if (!link::isAddress(result.address)) return;
    if (result.pointers.capacity > 0) asked(result.address, result.pointers, seconds);
    auto& entry = entries_[result.address];
    entry.check = result;
    if (entry.report) entry.report->safeToDelete = result.safe;
    if (!result.safe || result.files.size() != 1) return;
    const auto span = protocol::spanOf(result.pointers);
    for (int place = span.first; place < span.end; ++place) {
        stored(result.address, result.files.front(), span, place);
    }
}

void Book::deleted(int address, const Deletion& deletion)
{
    if (!link::isAddress(address)) return;
    auto& entry = entries_[address];
    entry.known = false;
    entry.files.clear();
    entry.upTo = false;
    entry.check.reset();
    entry.deletion = deletion.words;
}

void Book::kept(int address, const fs::path& old)
{
    if (link::isAddress(address)) entries_[address].keptOld = old;
}

std::vector<bool> Book::inAnyFile(const Entry& entry)
{
    std::vector<bool> slots(static_cast<std::size_t>(std::max<int>(entry.pointers.capacity, 0)), false);
    for (const auto& [file, held] : entry.files) {
        if (stampOf(file) != held.stamp) continue;
        for (std::size_t slot = 0; slot < slots.size(); ++slot) {
            slots[slot] = slots[slot] || held.slots[slot];
        }
    }
    return slots;
}

int Book::missing(int address) const
{
    const auto found = entries_.find(address);
    if (found == entries_.end() || !found->second.known) return -1;
    const auto span = protocol::spanOf(found->second.pointers);
    return span.count() - countIn(inAnyFile(found->second), span);
}

std::vector<fs::path> Book::files(int address) const
{
    const auto found = entries_.find(address);
    if (found == entries_.end() || !found->second.known) return {};
    const auto span = protocol::spanOf(found->second.pointers);
    std::vector<std::pair<int, fs::path>> counted;
    for (const auto& [file, held] : found->second.files) {
        const int count = stampOf(file) == held.stamp ? countIn(held.slots, span) : 0;
        if (count > 0) counted.emplace_back(-count, file);
    }
    std::sort(counted.begin(), counted.end());
    std::vector<fs::path> names;
    names.reserve(counted.size());
    for (const auto& [count, file] : counted) {
        names.push_back(file);
    }
    return names;
}

std::string Book::text(int address) const
{
    const auto found = entries_.find(address);
    if (found == entries_.end() || !(found->second.known || !found->second.deletion.empty())) {
        return "Readout " + text::general(address) +
               " has not been asked for its stored records since the program was started.";
    }
    const auto& entry = found->second;
    auto words = entry.known ? textOf(entry, address, files(address), missing(address)) : entry.deletion;
    if (!entry.keptOld.empty())
        words += " The file that was there before is kept as " + files::inWords(entry.keptOld) + ".";
    return words;
}

std::string Book::textOf(const Entry& entry, int address, const std::vector<fs::path>& names, int missing)
{
    const auto who = "readout " + text::general(address);
    const int total = protocol::spanOf(entry.pointers).count();
    if (total == 0) return "Readout " + text::general(address) + " held no records when it was last asked.";
    const auto records = text::general(total) + " records that " + who + " held when it was last asked ";
    if (missing > 0 && entry.upTo) {
        return "Up to " + text::general(missing) + " of the " + records +
               "are in no file: since the download it may have gone round its ring.";
    }
    if (names.empty()) return "None of the " + records + "is in a file that stands as this program wrote it.";
    std::string list;
    for (const auto& name : names) {
        list += (list.empty() ? "" : " and ") + files::inWords(name);
    }
    if (missing == 0) return "All " + records + "are in " + list + ".";
    return text::general(total - missing) + " of the " + records + "are in " + list + "; " +
           text::general(missing) + (missing == 1 ? " is not, or not whole." : " are not, or not whole.");
}

void Book::keepReport(const Report& report) { entries_[report.address].report = report; }

const Report* Book::report(int address) const
{
    const auto found = entries_.find(address);
    return found != entries_.end() && found->second.report ? &*found->second.report : nullptr;
}

const CheckResult* Book::lastCheck(int address) const
{
    const auto found = entries_.find(address);
    return found != entries_.end() && found->second.check ? &*found->second.check : nullptr;
}

} // namespace quorvel::autoread
