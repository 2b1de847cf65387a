#pragma once

#include "autoread/record_reader.h"
#include "jet/result.h"
#include "protocol/ring.h"

#include <map>
#include <optional>
#include <string>

namespace quorvel::autoread {

/// True when a row of a file can be this record: each field that the row has is the same. A row without any field, or
/// without both time and readings, matches nothing.
bool matches(const protocol::Record& row, const protocol::Record& record);

/// Seconds from one time to another.
double secondsBetween(const jet::Date& from, const jet::Date& to);

/// Finds records in a readout's ring by their time and values. What was asked once is not asked again.
///
/// Records are looked for between `first` and `next`, where times rise; of a ring that has wrapped also in the slots behind
/// `next`, where an earlier round left older ones. Places are counts of protocol::spanOf().
class RingSearch {
public:
    RingSearch(RecordReader& reader, const protocol::RingPointers& pointers);

    /// The place of the record that a row was made of; nothing when it is not there. A dozen questions at most.
    /// @return fails when records do not come.
    jet::Result<std::optional<int>> find(const protocol::Record& row);

    /// The record at a place, asked for unless it is known. Fails when it does not come.
    jet::Result<protocol::Record> at(int place);

    /// The first place between `first` and `next` whose record is later than `time`; the end when there is none.
    jet::Result<int> firstAfter(const jet::Date& time);

    const protocol::RecordSpan& rising() const { return rising_; }
    /// rising(), and behind it the older records of a ring that has wrapped.
    const protocol::RecordSpan& whole() const { return whole_; }

private:
    jet::Result<int> firstAfter(const jet::Date& time, int from, int end);
    jet::Result<std::optional<int>> findBetween(const protocol::Record& row, int from, int end);
    jet::Result<int> readableFrom(int place, int end);

    RecordReader& reader_;
    protocol::RecordSpan rising_;
    protocol::RecordSpan whole_;
    std::map<int, protocol::Record> known_; ///< by slot
};

} // namespace quorvel::autoread
