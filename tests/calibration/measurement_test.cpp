#include "calibration/measurement.h"

#include "support/bench_by_hand.h"

#include <gtest/gtest.h>

namespace quorvel::calibration {
namespace {

const std::string kLong = ":012101+01.2345-00.500000FF\r\n";
const std::string kShort = ":012101+01.2345-00.5000FF\r\n";

TEST(Measurement, FrameAsksForXAndYTogether)
{
    EXPECT_EQ(measurementFrame(*directionOf("X"), "01"), ":012101FF\r\n");
    EXPECT_EQ(measurementFrame(*directionOf("Y"), "F9"), ":F92101FF\r\n");
}

TEST(Measurement, FrameAsksForZByItsOwnCommand)
{
    EXPECT_EQ(measurementFrame(*directionOf("Z"), "0A"), ":0A2102FF\r\n");
}

TEST(Measurement, CountsInTwentySevenAndTwentyNineCharactersOnly)
{
    ASSERT_EQ(kLong.size(), 29U);
    ASSERT_EQ(kShort.size(), 27U);
    EXPECT_TRUE(isMeasurement(kLong));
    EXPECT_TRUE(isMeasurement(kShort));
    for (const std::size_t length : {0, 1, 26, 28, 30, 58}) {
        EXPECT_FALSE(isMeasurement(std::string(length, '0'))) << length;
    }
}

TEST(Measurement, ValuesStandAtTheSamePositionsInBothLengths)
{
    for (const auto& reply : {kLong, kShort}) {
        EXPECT_EQ(directionOf("X")->readings[0].measured(reply), "+01.2345");
        EXPECT_EQ(directionOf("Y")->readings[0].measured(reply), "-00.5000");
        EXPECT_EQ(directionOf("Z")->readings[0].measured(reply), "+01.2345");
        EXPECT_EQ(directionOf("Z")->readings[1].measured(reply), "-00.5000");
    }
}

using MeasurementByHand = test::BenchByHand;

TEST_F(MeasurementByHand, ThrowsAwayWhatWaitedBefore)
{
    device->receive("stale");
    answerWith({kLong});
    EXPECT_EQ(measure(module1, *directionOf("X"), "01"), kLong);
    EXPECT_EQ(frames, std::vector<std::string>{":012101FF"});
}

TEST_F(MeasurementByHand, EndOfALongReplyThatIsOnTheLineBelongsToIt)
{
    onFrame = [this] {
        device->receive(kLong.substr(0, 27));
        clock.plan(0.01, [this] { device->receive("\r"); });
        clock.plan(0.02, [this] { device->receive("\n"); });
    };
    EXPECT_EQ(measure(module1, *directionOf("X"), "01"), kLong);
}

TEST_F(MeasurementByHand, ShortReplyIsTakenAfterAMoment)
{
    answerWith({kShort});
    EXPECT_EQ(measure(module1, *directionOf("X"), "01"), kShort);
    EXPECT_LT(clock.passed(), 0.03 + 11 * 0.005 + 0.1);
}

TEST_F(MeasurementByHand, WaitsOneAndAHalfSecondsForASilentReadout)
{
    EXPECT_EQ(measure(module1, *directionOf("X"), "01"), "");
    EXPECT_NEAR(clock.passed(), 0.03 + 11 * 0.005 + 1.5, 0.02);
}

} // namespace
} // namespace quorvel::calibration
