#include "sim/line.h"

#include <algorithm>
#include <utility>

namespace quorvelsim {

double Line::arrival(double now)
{
    receivedUntil_ = std::max(now, receivedUntil_ + pace_.character);
    return receivedUntil_;
}

bool Line::send(std::string text, double earliest, bool hangUpAfter)
{
    if (queued_ >= kQueued) return false;
    queued_ += text.size();
    const auto later = [&](const Segment& other) { return other.taken == 0 && other.earliest > earliest; };
    const auto place = std::find_if(queue_.begin(), queue_.end(), later);
    queue_.insert(place, {std::move(text), earliest, 0, hangUpAfter});
    return true;
}

std::string Line::due(double now)
{
    std::string out;
    while (!queue_.empty() && !hungUp_) {
        auto& segment = queue_.front();
        while (segment.taken < segment.text.size() && nextCharacter(segment) <= now)
            out += segment.text[segment.taken++];
        if (segment.taken < segment.text.size() || segment.earliest > now) break;
        freeFrom_ =
            std::max(segment.earliest, freeFrom_) + pace_.character * static_cast<double>(segment.taken);
        queued_ -= segment.text.size();
        hungUp_ = segment.hangUpAfter;
        queue_.pop_front();
    }
    if (hungUp_) clear();
    return out;
}

std::optional<double> Line::nextDue() const
{
    if (queue_.empty()) return std::nullopt;
    const auto& segment = queue_.front();
    return segment.text.empty() ? segment.earliest : nextCharacter(segment);
}

bool Line::takeHangUp() { return std::exchange(hungUp_, false); }

void Line::clear()
{
    queue_.clear();
    queued_ = 0;
}

double Line::nextCharacter(const Segment& segment) const
{
    return std::max(segment.earliest, freeFrom_) + pace_.character * static_cast<double>(segment.taken + 1);
}

} // namespace quorvelsim
