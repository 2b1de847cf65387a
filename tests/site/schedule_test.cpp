#include "site/schedule.h"
#include "support/scripted_readout.h"

#include <QTimeZone>

#include <gtest/gtest.h>

namespace quorvel::site {
namespace {

QDateTime at(const char* time) { return {QDate(2024, 5, 17), QTime::fromString(time, "HH:mm:ss.zzz")}; }

std::string shownTime(const QDateTime& moment)
{
    return moment.toString(QStringLiteral("dd HH:mm:ss.zzz")).toStdString();
}

TEST(Schedule, IsAlignedToTheClock)
{
    EXPECT_EQ(shownTime(Schedule(10).nextAfter(at("09:05:30.001"))), "17 09:05:40.000");
    EXPECT_EQ(shownTime(Schedule(10).nextAfter(at("09:05:30.000"))), "17 09:05:40.000");
    EXPECT_EQ(shownTime(Schedule(10).nextAfter(at("09:05:29.999"))), "17 09:05:30.000");
    EXPECT_EQ(shownTime(Schedule(3600).nextAfter(at("09:05:30.000"))), "17 10:00:00.000");
    EXPECT_EQ(shownTime(Schedule(86400).nextAfter(at("09:05:30.000"))), "18 00:00:00.000");
}

TEST(Schedule, BeginsAnewAtMidnight)
{
    EXPECT_EQ(shownTime(Schedule(7).nextAfter(at("23:59:59.000"))), "18 00:00:00.000");
    EXPECT_EQ(shownTime(Schedule(7).nextAfter(at("00:00:00.000"))), "17 00:00:07.000");
}

TEST(Schedule, FollowsTheWallClockThroughSummerTime)
{
    const QTimeZone berlin("Europe/Berlin");
    ASSERT_TRUE(berlin.isValid());
    const auto spring = QDateTime(QDate(2024, 3, 31), QTime(1, 59, 55), berlin);
    EXPECT_EQ(Schedule(10).nextAfter(spring).toUTC().time(), QTime(1, 0, 0));
    const auto day = QDateTime(QDate(2024, 3, 31), QTime(0, 0), berlin);
    EXPECT_EQ(Schedule(86400).nextAfter(day), day.addSecs(82800)) << "midnight after a day of 23 h";
    const auto autumn = QDateTime::fromString("2024-10-27T00:30:00Z", Qt::ISODate).toTimeZone(berlin);
    EXPECT_EQ(autumn.time(), QTime(2, 30)); // for the first time
    EXPECT_EQ(Schedule(1800).nextAfter(autumn).toUTC().time(), QTime(1, 0)) << "2:00 for the second time";
}

TEST(Schedule, CountsWhatWasSkipped)
{
    const Schedule schedule(10);
    EXPECT_EQ(schedule.skippedBetween(at("09:05:30.000"), at("09:05:40.000")), 0);
    EXPECT_EQ(schedule.skippedBetween(at("09:05:30.000"), at("09:06:00.000")), 2);
    EXPECT_EQ(schedule.skippedBetween(at("09:05:30.000"), at("09:05:20.000")), 0);
}

TEST(Schedule, WaitsForTheMoment)
{
    test::ScriptedReadout readout([](const std::string&) { return std::string(); });
    readout.clock.startNow = at("09:05:33.250");
    const auto due = Schedule(10).wait(readout.module1, [] { return false; });
    ASSERT_TRUE(due);
    EXPECT_EQ(shownTime(*due), "17 09:05:40.000");
    EXPECT_EQ(shownTime(readout.clock.now()), "17 09:05:40.000");
    // the next one, not the same once more
    EXPECT_EQ(shownTime(*Schedule(10).wait(readout.module1, [] { return false; })), "17 09:05:50.000");
}

TEST(Schedule, StopsWaitingAtOnce)
{
    test::ScriptedReadout readout([](const std::string&) { return std::string(); });
    int looks = 0;
    EXPECT_FALSE(Schedule(3600).wait(readout.module1, [&] { return ++looks == 3; }));
    EXPECT_LT(readout.clock.passed(), 1);
}

TEST(Schedule, ChoosesAnewWhenTheClockIsSetBack)
{
    test::ScriptedReadout readout([](const std::string&) { return std::string(); });
    readout.clock.startNow = at("09:05:33.000");
    readout.clock.plan(2, [&] { readout.clock.startNow = at("08:05:33.000"); });
    const auto due = Schedule(10).wait(readout.module1, [] { return false; });
    EXPECT_EQ(shownTime(*due), "17 08:05:40.000");
    EXPECT_LT(readout.clock.passed(), 10);
}

} // namespace
} // namespace quorvel::site
