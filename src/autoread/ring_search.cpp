#include "autoread/ring_search.h"

#include <cmath>

namespace quorvel::autoread {

using namespace protocol;

namespace {

constexpr double kDaySeconds = 86400;

} // namespace

bool matches(const Record& row, const Record& record)
{
    if (row.time && row.time != record.time) return false;
    bool anyReading = false;
    for (std::size_t i = 0; i < kMostReadings; ++i) {
        // A file of another type has fewer readings than the record, or more.
        if (!row.readings[i] || (i >= kTwoDirections.readings && !record.readings[i])) continue;
        if (row.readings[i] != record.readings[i]) return false;
        anyReading = true;
    }
    return row.time || anyReading;
}

double secondsBetween(const jet::Date& from, const jet::Date& to)
{
    return std::round((to.serial - from.serial) * kDaySeconds);
}

RingSearch::RingSearch(RecordReader& reader, const RingPointers& pointers)
    : reader_(reader), rising_(risingSpan(pointers)), whole_(spanOf(pointers))
{}

jet::Result<Record> RingSearch::at(int place)
{
    const int slot = whole_.indexOf(place);
    const auto known = known_.find(slot);
    if (known != known_.end()) return known->second;
    reader_.module1().clock().letEventsRun();
    const auto answer = reader_.ask(slot);
    if (answer.kind != Answer::Kind::Record) return jet::Failure{answer.words};
    return known_[slot] = answer.record;
}

/// The first place from here on whose record has a time; `end` when none has.
jet::Result<int> RingSearch::readableFrom(int place, int end)
{
    for (; place < end; ++place) {
        const auto record = at(place);
        if (!record) return record.failure();
        if (record->time) break;
    }
    return place;
}

jet::Result<int> RingSearch::firstAfter(const jet::Date& time, int from, int end)
{
    while (from < end) {
        const int middle = from + (end - from) / 2;
        const auto readable = readableFrom(middle, end);
        if (!readable) return readable.failure();
        const bool isLater =
            *readable == end || known_.at(whole_.indexOf(*readable)).time->serial > time.serial;
        (isLater ? end : from) = isLater ? middle : *readable + 1;
    }
    return from;
}

jet::Result<int> RingSearch::firstAfter(const jet::Date& time)
{
    return firstAfter(time, rising_.first, rising_.end);
}

jet::Result<std::optional<int>> RingSearch::findBetween(const Record& row, int from, int end)
{
    const auto after = firstAfter(*row.time, from, end);
    if (!after) return after.failure();
    for (int place = *after - 1; place >= from; --place) {
        const auto record = at(place);
        if (!record) return record.failure();
        if (matches(row, *record)) return std::optional(place);
        if (record->time && record->time != row.time) break;
    }
    return std::optional<int>();
}

jet::Result<std::optional<int>> RingSearch::find(const Record& row)
{
    if (!row.time || rising_.count() == 0) return std::optional<int>();
    auto found = findBetween(row, rising_.first, rising_.end);
    if (!found || *found || whole_.end == rising_.end) return found;
    return findBetween(row, rising_.end, whole_.end);
}

} // namespace quorvel::autoread
