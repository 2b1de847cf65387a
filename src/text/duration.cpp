#include "text/duration.h"

#include "text/number.h"

#include <cmath>

namespace quorvel::text {

namespace {

constexpr int kSecondsPerMinute = 60;

/// A unit of time, and the smaller one that is said with it.
struct Unit {
    long long seconds;
    const char* name;
    long long smallerSeconds;
    const char* smallerName;
};
constexpr Unit kUnits[] = {{86400, " days ", 3600, " h"}, {3600, " h ", 60, " min"}, {60, " min ", 1, " s"}};

} // namespace

std::string timeLeft(double seconds)
{
    const int whole = static_cast<int>(std::ceil(seconds));
    const int minutes = whole / kSecondsPerMinute;
    return "about " + (minutes > 0 ? general(minutes) + " min " : std::string()) +
           general(whole % kSecondsPerMinute) + " s left";
}

std::string duration(double seconds)
{
    const long long whole = std::llround(seconds);
    for (const auto& unit : kUnits) {
        if (whole < unit.seconds) continue;
        const auto name = unit.seconds == kUnits[0].seconds && whole < 2 * unit.seconds ? " day " : unit.name;
        return std::to_string(whole / unit.seconds) + name +
               std::to_string(whole % unit.seconds / unit.smallerSeconds) + unit.smallerName;
    }
    return std::to_string(whole) + " s";
}

} // namespace quorvel::text
