#include "text/duration.h"

#include "text/number.h"

#include <cmath>

namespace quorvel::text {

namespace {

constexpr int kSecondsPerMinute = 60;

} // namespace

std::string timeLeft(double seconds)
{
    const int whole = static_cast<int>(std::ceil(seconds));
    const int minutes = whole / kSecondsPerMinute;
    return "about " + (minutes > 0 ? general(minutes) + " min " : std::string()) +
           general(whole % kSecondsPerMinute) + " s left";
}

} // namespace quorvel::text
