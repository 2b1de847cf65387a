#include "autoread/continuing.h"

#include "autoread/file_name.h"
#include "files/name.h"
#include "text/duration.h"
#include "text/number.h"

#include <algorithm>

namespace quorvel::autoread {

using namespace protocol;

namespace {

/// How many rows before the last one are looked for when it is not found itself.
constexpr int kEarlierRows[] = {0, 16, 64, 256};

std::string momentText(const std::optional<jet::Date>& time)
{
    auto words = time ? time->iso() : std::string("a time that could not be read");
    std::replace(words.begin(), words.end(), 'T', ' ');
    return words;
}

std::string countText(int count, const char* what) { return text::general(count) + " " + what; }

/// The row with the latest time; nothing when no row has one.
const Record* latestRow(const std::vector<Record>& rows)
{
    const Record* latest = nullptr;
    for (const auto& row : rows) {
        if (row.time && (!latest || row.time->serial > latest->time->serial)) latest = &row;
    }
    return latest;
}

bool isBlank(const Record& row)
{
    return std::ranges::none_of(row.readings, [](const auto& reading) { return reading.has_value(); });
}

/// The place of the file's last row, by its own time or by that of an earlier row; nothing when the ring does not have
/// it.
jet::Result<std::optional<int>> placeOfLast(RingSearch& search, const std::vector<Record>& rows)
{
    const auto count = static_cast<int>(rows.size());
    const auto timed = std::find_if(rows.rbegin(), rows.rend(), [](const Record& row) { return row.time; });
    const auto readable = static_cast<int>(timed - rows.rbegin());
    for (const int earlier : kEarlierRows) {
        const int back = readable + earlier;
        if (back >= count) break;
        const auto found = search.find(rows[static_cast<std::size_t>(count - 1 - back)]);
        if (!found) return found.failure();
        if (!*found || **found + back >= search.whole().end) continue;
        const int place = **found + back;
        const auto record = search.at(place);
        if (!record) return record.failure();
        if (matches(rows.back(), *record) || (!rows.back().time && isBlank(rows.back())))
            return std::optional(place);
    }
    return std::optional<int>();
}

/// From where to where a download goes on.
struct Onward {
    std::optional<int>
        last; ///< place of the last record that the file has; nothing: the ring does not have it
    int end = 0;
};

/// A file that was downloaded from a ring that had wrapped ends with what an earlier round left, so its newest record lies
/// further up. What is new since then comes before the rest of such remains.
jet::Result<Onward> onwardFrom(RingSearch& search, const std::vector<Record>& rows, const Record& first)
{
    const auto last = placeOfLast(search, rows);
    if (!last) return last.failure();
    if (*last && **last < search.rising().end) {
        const bool beganHere = matches(rows.front(), first);
        return Onward{*last, beganHere ? search.whole().end : search.rising().end};
    }
    const auto* latest = latestRow(rows);
    if (!latest) return Onward{*last, search.whole().end};
    const auto newest = search.find(*latest);
    if (!newest) return newest.failure();
    const bool isNewest = *newest && **newest < search.rising().end;
    if (!isNewest || (*last && **newest == search.rising().end - 1)) return Onward{*last, search.whole().end};
    return Onward{*newest, search.rising().end};
}

std::string newText(int count, const std::optional<jet::Date>& since)
{
    if (count == 0) return "Nothing is new since " + momentText(since) + ".";
    return countText(count, count == 1 ? "new record since " : "new records since ") + momentText(since) +
           ".";
}

void sayGap(ContinuePlan& plan, const jet::Date& latest)
{
    plan.follow = Follow::Gap;
    plan.gapSeconds = secondsBetween(latest, *plan.ring.first.time);
    const auto interval = intervalSeconds(plan.ring.mode);
    plan.words = "The readout no longer holds the last record of the file, of " + momentText(latest) +
                 ". Its oldest is of " + momentText(plan.ring.first.time) + ": " +
                 text::duration(plan.gapSeconds) + " lie between them" +
                 (interval && plan.gapSeconds <= *interval ? ", not more than the interval." : ".") + " " +
                 countText(plan.toFetch.count(), "records would follow.");
}

/// The last row is not in the ring.
jet::Status planWithout(RingSearch& search, const std::optional<jet::Date>& latest, ContinuePlan& plan)
{
    plan.toFetch = search.rising();
    const auto& oldest = plan.ring.first.time;
    if (latest && oldest && latest->serial < oldest->serial) {
        plan.toFetch = search.whole();
        sayGap(plan, *latest);
        return {};
    }
    if (latest) {
        const auto from = search.firstAfter(*latest);
        if (!from) return from.failure();
        plan.toFetch.first = *from;
    }
    plan.follow = plan.toFetch.count() > 0 ? Follow::Elsewhere : Follow::NothingLater;
    plan.words = "The readout does not have the last record of the file, of " + momentText(latest) +
                 ", although it holds records from " + momentText(oldest) + " to " +
                 momentText(plan.ring.last.time) + ": the file is of another readout, or the clock was set. ";
    plan.words += plan.follow == Follow::Elsewhere
                      ? countText(plan.toFetch.count(), "later records would follow.")
                      : "No record is later than the file. Take a new file.";
    return {};
}

jet::Status planFrom(RingSearch& search, const std::vector<Record>& rows, ContinuePlan& plan)
{
    if (rows.empty()) {
        plan.follow = Follow::EmptyFile;
        plan.toFetch = search.whole();
        plan.words = "The file has no rows yet: " + countText(plan.toFetch.count(), "records follow.");
        return {};
    }
    const auto onward = onwardFrom(search, rows, plan.ring.first);
    if (!onward) return onward.failure();
    const auto* latest = latestRow(rows);
    const auto time = latest ? latest->time : std::nullopt;
    if (!onward->last) return planWithout(search, time, plan);
    plan.toFetch = {search.whole().capacity, *onward->last + 1, onward->end};
    plan.follow = plan.toFetch.count() == 0 ? Follow::UpToDate : Follow::On;
    plan.words = newText(plan.toFetch.count(), rows.back().time ? rows.back().time : time);
    return {};
}

/// What about the file itself speaks against continuing it.
void sayWhatDiffers(ContinuePlan& plan, int address)
{
    plan.otherType = plan.layout != plan.ring.layout();
    if (plan.otherType) {
        plan.words +=
            plan.ring.threeDirection
                ? " The readout is of type C, but the file has no columns for Z: these readings would be "
                  "lost."
                : " The file is of type C, but the readout has no Z: these columns would stay empty.";
    }
    const auto named = addressInName(plan.path);
    plan.otherName = named && *named != address;
    if (plan.otherName) {
        plan.words += " By its name the file is of readout " + text::general(*named) + ", not of readout " +
                      text::general(address) + ".";
    }
    if (plan.tornRow) plan.words += " Half a row at the end of the file will be taken off.";
}

} // namespace

jet::Result<ContinuePlan> planContinuing(RecordReader& reader, const RingState& ring, int address,
                                         const std::filesystem::path& path)
{
    const auto table = readRecordFile(path);
    if (!table) return table.failure();
    ContinuePlan plan{.path = path,
                      .layout = table->layout,
                      .rows = static_cast<int>(table->rows.size()),
                      .stamp = stampOf(path),
                      .ring = ring,
                      .tornRow = table->tornRow};
    if (!table->rows.empty()) plan.lastRow = table->rows.back();
    if (ring.pointers.isEmpty()) {
        plan.follow = Follow::UpToDate;
        plan.words = "The readout holds no records: nothing is new.";
        return plan;
    }
    RingSearch search(reader, ring.pointers);
    if (auto planned = planFrom(search, table->rows, plan); !planned) return planned.failure();
    sayWhatDiffers(plan, address);
    return plan;
}

} // namespace quorvel::autoread
