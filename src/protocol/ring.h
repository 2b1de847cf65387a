#pragma once

#include "link/transaction.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The ring in which a readout keeps the readings that it took on its own.
///
/// The answer to the count query has 21 characters, counted from 1:
///
///     1  ":"   2-3 address   4-5 "22"   6-9 capacity   10-13 first   14-17 next   18-21 not looked at
///
/// First is the index of the oldest record, next the one that is written next.
namespace quorvel::protocol {

inline constexpr auto kNoData = "No Data";
inline constexpr auto kDeleteQuestion = "Are you sure to delete data saved in Pendulum Readout";
inline constexpr auto kDataDeleted = "Data Deleted";

/// What the count query answers, as received.
struct RingPointers {
    std::int16_t capacity = 0;
    std::int16_t first = 0;
    std::int16_t next = 0;

    bool isEmpty() const { return next == first; }
    bool operator==(const RingPointers&) const = default;
};

/// The records to fetch: counts from `first` up to, not including, `end`. The index of a count is the remainder
/// of its division by the capacity.
struct RecordSpan {
    int capacity = 1; ///< 1..32767
    int first = 0;    ///< 0..32767
    int end = 0;      ///< first..32767

    int count() const { return end - first; }
    int indexOf(int recordCount) const { return recordCount % capacity; }
    bool operator==(const RecordSpan&) const = default;
};

/// For the readout of these two address digits: asks for the pointers, deletes all records.
link::Transaction pointersQuery(std::string_view addressDigits);
link::Transaction recordsDelete(std::string_view addressDigits);

/// What a reply says; fields that are missing or not numbers are 0.
RingPointers readPointers(std::string_view reply);

/// True when a reply has its length, its head and digits in all three fields, so that it can be relied on.
bool isPlainPointersReply(std::string_view reply);

/// The records between the pointers. A ring that has wrapped (next before first) counts as full: all its slots,
/// beginning with the oldest. Only for pointers for which whyNotFetchable() returns nothing.
RecordSpan spanOf(const RingPointers& pointers);

/// The records of spanOf() from first up to next, round the ring: they were written in this order, so their times rise.
/// Of a ring that has wrapped, the slots between next and first follow in spanOf(), which an earlier round left: they are
/// older than all of these. Only for pointers for which whyNotFetchable() returns nothing.
RecordSpan risingSpan(const RingPointers& pointers);

/// True when a readout has confirmed that it deletes its records: its answer is the frame.
bool isDeletionConfirmed(const link::Exchange& deletion);

/// Why no record can be fetched between these pointers, in words for the operator: a capacity below 1, a
/// negative pointer, or an end beyond 32767. Empty when they can be fetched.
std::string whyNotFetchable(const RingPointers& pointers);

} // namespace quorvel::protocol
