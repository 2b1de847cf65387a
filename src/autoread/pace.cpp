#include "autoread/pace.h"

#include "link/pacing.h"
#include "text/number.h"

#include <algorithm>
#include <cmath>

namespace quorvel::autoread {

namespace {

constexpr int kFrameLength = 13;
constexpr int kSecondsPerMinute = 60;

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

std::string timeLeftText(double seconds)
{
    const int whole = static_cast<int>(std::ceil(seconds));
    const int minutes = whole / kSecondsPerMinute;
    return "about " + (minutes > 0 ? text::general(minutes) + " min " : std::string()) +
           text::general(whole % kSecondsPerMinute) + " s left";
}

} // namespace quorvel::autoread
