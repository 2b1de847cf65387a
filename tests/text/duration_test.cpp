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

} // namespace
} // namespace quorvel::text
