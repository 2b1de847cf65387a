#include "autoread/pace.h"

#include "link/pacing.h"

#include <algorithm>

namespace quorvel::autoread {

namespace {

constexpr int kFrameLength = 13;

} // namespace

double leastSecondsPerRecord(const protocol::RecordLayout& layout)
{
    const double frame = static_cast<double>(link::kPauseBeforeFrame) +
                         kFrameLength * static_cast<double>(link::kPauseAfterCharacter);
    return frame + layout.replyLength * link::kCharacterOnTheWire;
}

double secondsLeft(const protocol::RecordLayout& layout, int total, int received, double passed)
{
    const double each = received > 0 ? passed / received : leastSecondsPerRecord(layout);
    return std::max(0, total - received) * std::max(each, 0.0);
}

} // namespace quorvel::autoread
