#include "sim/ring.h"

#include "tests/sim/test_bus.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

TEST(Ring, WrapsAndLosesTheOldest)
{
    Ring ring(4, 0, 0);
    for (int i = 1; i <= 5; ++i)
        ring.append({i, {}});
    EXPECT_EQ(ring.first(), 2);
    EXPECT_EQ(ring.next(), 1);
    EXPECT_EQ(ring.stored(), 3);
    ASSERT_NE(ring.at(2), nullptr);
    EXPECT_EQ(ring.at(2)->time, 3);
    EXPECT_EQ(ring.at(ring.slotBefore(1))->time, 5);
}

TEST(Ring, IsEmptyAfterADeletion)
{
    Ring ring(4, 2, 1);
    ring.put(3, {7, {}});
    ring.clear();
    EXPECT_EQ(ring.stored(), 0);
    EXPECT_EQ(ring.first(), ring.next());
    EXPECT_EQ(ring.at(3), nullptr);
    EXPECT_EQ(ring.capacity(), 4);
}

TEST(Ring, OfOneSlotHoldsNothing)
{
    Ring ring(1, 0, 0);
    ring.append({1, {}});
    EXPECT_EQ(ring.stored(), 0);
    EXPECT_EQ(ring.slotBefore(3), 0);
}

TEST(RingOfAReadout, HasAnHourlyPastAtTheStart)
{
    TestBus test;
    const auto& ring = test.bus.find(5)->ring;
    ASSERT_EQ(ring.stored(), 200);
    EXPECT_EQ(isoTime(ring.at(199)->time), "2024-05-17T09:00:00");
    EXPECT_EQ(isoTime(ring.at(198)->time), "2024-05-17T08:00:00");
    EXPECT_EQ(ring.at(200), nullptr);
    for (int slot = 0; slot < 200; ++slot)
        EXPECT_TRUE(ring.at(slot)->values[0] > 0 && ring.at(slot)->values[0] < 50) << slot;
}

TEST(RingOfAReadout, ThatHasWrappedIsWrittenAllRound)
{
    TestBus test;
    auto& readout = *test.bus.find(5);
    readout.fillRing(1000, 998, 2, 0);
    EXPECT_EQ(readout.ring.stored(), 4);
    for (int i = 1; i < 1000; ++i) {
        const auto* older = readout.ring.at((2 + i - 1) % 1000);
        const auto* newer = readout.ring.at((2 + i) % 1000);
        ASSERT_TRUE(older != nullptr && newer != nullptr);
        EXPECT_EQ(newer->time - older->time, 3600);
    }
}

TEST(AutoReadings, AreTakenAsTheClockRuns)
{
    TestBus test;
    EXPECT_EQ(test.talk(":05050100002000FF"), ":05050100002000FF\r\n"); // every 20 seconds, by 09:05:30
    EXPECT_EQ(test.talk(":0525FF", 1), ":0525FF\r\n");                  // at second 60
    test.now = 100.5;
    EXPECT_EQ(test.talk(":0522FF"), ":0522100000000002FF\r\n");
    EXPECT_EQ(test.talk(":05240001FF").substr(0, 21), ":05240001240517090710");
}

TEST(AutoReadings, StartAnewWithTheClock)
{
    TestBus test;
    test.talk(":0525FF", 0);
    test.talk(":0503300101000000FF", 0); // years later: no flood of readings
    EXPECT_EQ(test.talk(":0522FF", 0), ":0522100000000000FF\r\n");
    test.now = 3600;
    EXPECT_EQ(test.talk(":0522FF"), ":0522100000000001FF\r\n");
    EXPECT_EQ(test.talk(":05240000FF").substr(9, 12), "300101010000");
}

TEST(AutoReadings, AtFixedTimesComeAtTheirHours)
{
    TestBus test;
    auto& readout = *test.bus.find(5);
    readout.ring.clear();
    readout.autoReading = {AutoReading::kFixedTimes, {8, 12, 16, 20}};
    readout.restartAutoReading(0);
    readout.catchUp(86400);
    ASSERT_EQ(readout.ring.stored(), 4);
    EXPECT_EQ(isoTime(readout.ring.at(0)->time), "2024-05-17T12:00:00");
    EXPECT_EQ(isoTime(readout.ring.at(3)->time), "2024-05-18T08:00:00");
}

TEST(AutoReadings, AfterALongPauseFillTheRingOnce)
{
    TestBus test;
    auto& readout = *test.bus.find(5);
    test.talk(":05050100000100FF", 0);
    readout.catchUp(40 * 86400.0);
    EXPECT_EQ(readout.ring.stored(), 999);
    EXPECT_EQ(isoTime(readout.ring.at(readout.ring.slotBefore(1))->time), "2024-06-26T09:05:30");
}

} // namespace
} // namespace quorvelsim
