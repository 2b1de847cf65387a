#include "protocol/measurement.h"

#include "support/bench_by_hand.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

const std::string kLong = ":012101+01.2345-00.500000FF\r\n";
const std::string kShort = ":012101+01.2345-00.5000FF\r\n";

TEST(Measurement, FrameAsksForXAndYTogether)
{
    EXPECT_EQ(measurement(Direction::X, "01").frame, ":012101FF\r\n");
    EXPECT_EQ(measurement(Direction::Y, "F9").frame, ":F92101FF\r\n");
}

TEST(Measurement, FrameAsksForZByItsOwnCommand)
{
    EXPECT_EQ(measurement(Direction::Z, "0A").frame, ":0A2102FF\r\n");
}

TEST(Measurement, CountsInTwentySevenAndTwentyNineCharactersOnly)
{
    ASSERT_EQ(kLong.size(), 29U);
    ASSERT_EQ(kShort.size(), 27U);
    EXPECT_TRUE(isMeasurement(kLong));
    EXPECT_TRUE(isMeasurement(kShort));
    for (const std::size_t length : {0U, 1U, 26U, 28U, 30U, 58U}) {
        EXPECT_FALSE(isMeasurement(std::string(length, '0'))) << length;
    }
}

TEST(Measurement, ValuesStandAtTheSamePositionsInBothLengths)
{
    for (const auto& reply : {kLong, kShort}) {
        EXPECT_EQ(measuredBy(Sensor::X, reply), "+01.2345");
        EXPECT_EQ(measuredBy(Sensor::Y, reply), "-00.5000");
        EXPECT_EQ(measuredBy(Sensor::Z1, reply), "+01.2345");
        EXPECT_EQ(measuredBy(Sensor::Z2, reply), "-00.5000");
    }
}

using MeasurementByHand = test::BenchByHand;

TEST_F(MeasurementByHand, ThrowsAwayWhatWaitedBefore)
{
    device->receive("stale");
    answerWith({kLong});
    EXPECT_EQ(module1.transact(measurement(Direction::X, "01")).reply, kLong);
    EXPECT_EQ(frames, std::vector<std::string>{":012101FF"});
}

TEST_F(MeasurementByHand, EndOfALongReplyThatIsOnTheLineBelongsToIt)
{
    onFrame = [this] {
        device->receive(kLong.substr(0, 27));
        clock.plan(0.01, [this] { device->receive("\r"); });
        clock.plan(0.02, [this] { device->receive("\n"); });
    };
    EXPECT_EQ(module1.transact(measurement(Direction::X, "01")).reply, kLong);
}

TEST_F(MeasurementByHand, ShortReplyIsTakenAfterAMoment)
{
    answerWith({kShort});
    EXPECT_EQ(module1.transact(measurement(Direction::X, "01")).reply, kShort);
    EXPECT_LT(clock.passed(), 0.03 + 11 * 0.005 + 0.1);
}

TEST_F(MeasurementByHand, WaitsOneAndAHalfSecondsForASilentReadout)
{
    EXPECT_EQ(module1.transact(measurement(Direction::X, "01")).reply, "");
    EXPECT_NEAR(clock.passed(), 0.03 + 11 * 0.005 + 1.5, 0.02);
}

} // namespace
} // namespace quorvel::protocol
