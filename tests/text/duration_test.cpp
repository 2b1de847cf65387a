#include "text/duration.h"

#include <gtest/gtest.h>

namespace quorvel::text {
namespace {

TEST(Duration, TimeLeftIsToldInMinutesAndSeconds)
{
    EXPECT_EQ(timeLeft(137.7), "about 2 min 18 s left");
    EXPECT_EQ(timeLeft(120), "about 2 min 0 s left");
    EXPECT_EQ(timeLeft(8.2), "about 9 s left");
    EXPECT_EQ(timeLeft(0), "about 0 s left");
}

TEST(Duration, IsSaidInItsTwoLargestUnits)
{
    EXPECT_EQ(duration(0), "0 s");
    EXPECT_EQ(duration(59.4), "59 s");
    EXPECT_EQ(duration(59.6), "1 min 0 s");
    EXPECT_EQ(duration(137), "2 min 17 s");
    EXPECT_EQ(duration(3600), "1 h 0 min");
    EXPECT_EQ(duration(86399), "23 h 59 min");
    EXPECT_EQ(duration(86400), "1 day 0 h");
    EXPECT_EQ(duration(12 * 86400 + 4 * 3600), "12 days 4 h");
}

} // namespace
} // namespace quorvel::text
