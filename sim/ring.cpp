#include "sim/ring.h"

namespace quorvelsim {

int Ring::slotBefore(int back) const { return ((next_ - back) % capacity_ + capacity_) % capacity_; }

const Record* Ring::at(int slot) const
{
    const auto found = slots_.find(slot);
    return found == slots_.end() ? nullptr : &found->second;
}

void Ring::append(const Record& record)
{
    put(next_, record);
    next_ = (next_ + 1) % capacity_;
    if (next_ == first_) first_ = (first_ + 1) % capacity_;
}

void Ring::clear()
{
    slots_.clear();
    first_ = next_ = 0;
}

} // namespace quorvelsim
