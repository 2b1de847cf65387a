#include "sim/civil.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

TEST(CivilTime, GoesOverToTextAndBack)
{
    for (const char* text : {"2000-01-01T00:00:00", "2024-02-29T23:59:59", "2099-12-31T23:59:59"}) {
        const auto time = fromIsoTime(text);
        ASSERT_TRUE(time) << text;
        EXPECT_EQ(isoTime(*time), text);
        EXPECT_EQ(fromBusTime(busTime(*time)), time);
    }
    EXPECT_EQ(busTime(fromIsoTime("2024-05-17T09:05:30").value_or(0)), "240517090530");
}

TEST(CivilTime, RefusesWhatIsNoTime)
{
    for (const char* bad : {"", "240230000000", "241301000000", "240100000000", "240101240000",
                            "240101006000", "240101000060", "24010100000", "2401010000000", "2401010000x0"})
        EXPECT_FALSE(fromBusTime(bad)) << bad;
    for (const char* bad :
         {"2024-05-17 09:05:30", "2024-05-17", "1999-05-17T09:05:30", "2024-02-30T09:05:30"})
        EXPECT_FALSE(fromIsoTime(bad)) << bad;
}

TEST(ReadoutClock, RunsFromWhereItIsSet)
{
    ReadoutClock clock(1000);
    EXPECT_EQ(clock.at(0), 1000);
    EXPECT_EQ(clock.at(1.99), 1001);
    clock.set(5000, 10.5);
    EXPECT_EQ(clock.at(10.5), 5000);
    EXPECT_EQ(clock.at(11.4), 5000);
    EXPECT_EQ(clock.at(11.5), 5001);
}

} // namespace
} // namespace quorvelsim
