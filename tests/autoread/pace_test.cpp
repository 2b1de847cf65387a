#include "autoread/pace.h"

#include <gtest/gtest.h>

namespace quorvel::autoread {

using namespace protocol;

namespace {

// 0.03 s, 13 characters of 0.005 s, and 41 or 57 characters of 10 bits at 9600 baud.
TEST(Pace, RecordTakesItsPausesAndItsReply)
{
    EXPECT_NEAR(leastSecondsPerRecord(kTwoDirections), 0.1377083, 1e-6);
    EXPECT_NEAR(leastSecondsPerRecord(kThreeDirections), 0.1543750, 1e-6);
}

TEST(Pace, TimeLeftIsKnownFromTheCountAtFirst)
{
    EXPECT_NEAR(secondsLeft(kTwoDirections, 1000, 0, 0), 137.7, 0.01);
}

TEST(Pace, TimeLeftFollowsThePaceSoFar)
{
    EXPECT_DOUBLE_EQ(secondsLeft(kTwoDirections, 1000, 250, 50), 150);
    EXPECT_DOUBLE_EQ(secondsLeft(kTwoDirections, 1000, 1000, 200), 0);
}

} // namespace

} // namespace quorvel::autoread
