#pragma once

#include "sim/civil.h"

#include <array>
#include <map>

namespace quorvelsim {

/// One reading that a readout took on its own.
struct Record {
    CivilSeconds time = 0;
    std::array<double, 4> values{}; ///< X, Y, Z1, Z2 in mm, as shown at that time
    std::array<bool, 5> noisy{};    ///< date and the four values: whether only noise is left of them
};

/// The ring of stored records: `first` is the oldest one, `next` the slot that is written next; both are equal
/// when nothing is stored, so a ring holds at most capacity - 1 records.
class Ring {
public:
    Ring() = default;

    /// @param capacity  1..9999 slots; first and next are 0..capacity - 1. Slots are blank until put().
    Ring(int capacity, int first, int next) : capacity_(capacity), first_(first), next_(next) {}

    [[nodiscard]] int capacity() const { return capacity_; }
    [[nodiscard]] int first() const { return first_; }
    [[nodiscard]] int next() const { return next_; }
    [[nodiscard]] int stored() const { return (next_ - first_ + capacity_) % capacity_; }

    /// The slot `back` places before `next` (1 is the newest record).
    [[nodiscard]] int slotBefore(int back) const;

    /// What the slot holds, stored or left from an earlier round; null when it was never written.
    [[nodiscard]] const Record* at(int slot) const;

    void put(int slot, const Record& record) { slots_[slot] = record; }

    /// Writes at `next` and moves on; the oldest record gives way when the ring is full.
    void append(const Record& record);

    /// Deletes all records; the ring begins at slot 0 again.
    void clear();

private:
    int capacity_ = 1000;
    int first_ = 0;
    int next_ = 0;
    std::map<int, Record> slots_;
};

} // namespace quorvelsim
