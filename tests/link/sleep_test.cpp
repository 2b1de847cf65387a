#include "link/sleep.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include <gtest/gtest.h>

namespace quorvel::link {
namespace {

double secondsOf(double wanted)
{
    const auto begin = std::chrono::steady_clock::now();
    sleepFor(wanted);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// One that waited for ticks would end with one, and the next begin with it: of pauses of 5 ms nearly all would last
// 15.6 ms. A machine that is busy stretches some, never all.
TEST(Sleep, OfAPauseIsNotStretchedToATickOfTheClock)
{
    constexpr double kPause = 0.005;
    std::array<double, 101> pauses{};
    for (auto& pause : pauses)
        pause = secondsOf(kPause);
    std::sort(pauses.begin(), pauses.end());
    std::printf("pauses of 5 ms: shortest %.2f, median %.2f, 90 %% below %.2f, longest %.2f ms\n",
                pauses[0] * 1e3, pauses[50] * 1e3, pauses[90] * 1e3, pauses[100] * 1e3);
    EXPECT_GE(pauses.front(), kPause * 0.9);
    EXPECT_LT(pauses[10], 0.0125) << "nearly as long as a tick";
}

TEST(Sleep, OfNoTimeReturnsAtOnce)
{
    EXPECT_LT(secondsOf(0), 1);
    EXPECT_LT(secondsOf(-5), 1);
}

} // namespace
} // namespace quorvel::link
