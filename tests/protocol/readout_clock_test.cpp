#include "protocol/readout_clock.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

const QDateTime kTime(QDate(2024, 5, 17), QTime(9, 5, 30));

TEST(ReadoutClock, Frames)
{
    EXPECT_EQ(clockQuery("05").frame, ":0504FF\r\n");
    EXPECT_EQ(clockSet("05", kTime).frame, ":0503240517090530FF\r\n");
    EXPECT_EQ(clockQuery("05").reply.count, 21);
    EXPECT_EQ(clockSet("05", kTime).reply.count, 21);
}

TEST(ReadoutClock, AfternoonIsInTwentyFourHours)
{
    const QDateTime evening(QDate(2099, 12, 31), QTime(23, 59, 59));
    EXPECT_EQ(clockSet("05", evening).frame, ":0503991231235959FF\r\n");
}

TEST(ReadoutClock, CenturyIsAlwaysTwenty)
{
    EXPECT_EQ(clockQuestion(":0504991231235959FF\r\n"),
              "Current time is 2099-12-31  23:59:59.\r\n"
              "Are you sure to change Pendulum's RTC time same as PC'time?");
    EXPECT_EQ(clockText(":0504240517090530FF\r\n"), "2024-05-17  09:05:30");
}

TEST(ReadoutClock, OtherCharactersAreShownAsReceived)
{
    EXPECT_EQ(clockText(":0504XYZABC--::??FF\r\n"), "20XY-ZA-BC  --:::"
                                                    ":??");
    EXPECT_EQ(clockText(""), "20--  ::");
}

TEST(ReadoutClock, PointInTimeNeedsAValidDate)
{
    EXPECT_EQ(clockOf(":0504240517090530FF\r\n"), kTime);
    EXPECT_FALSE(clockOf(":0504241332090530FF\r\n"));
    EXPECT_FALSE(clockOf(":0504240517250530FF\r\n"));
    EXPECT_FALSE(clockOf(":0504XYZABC090530FF\r\n"));
    EXPECT_FALSE(clockOf(""));
}

} // namespace
} // namespace quorvel::protocol
