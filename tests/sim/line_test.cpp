#include "sim/line.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

constexpr Pace kTenPerSecond{0.1, 0, 0};

TEST(Line, SendsOneCharacterAfterTheOther)
{
    Line line(kTenPerSecond);
    line.send("abc", 1);
    EXPECT_NEAR(line.nextDue().value_or(0), 1.1, 1e-9);
    EXPECT_EQ(line.due(1.05), "");
    EXPECT_EQ(line.due(1.15), "a");
    EXPECT_EQ(line.due(1.15), "");
    EXPECT_EQ(line.due(5), "bc");
    EXPECT_FALSE(line.nextDue());
}

TEST(Line, ASecondTextWaitsForTheFirst)
{
    Line line(kTenPerSecond);
    line.send("abc", 1);
    line.send("de", 1.1);
    EXPECT_EQ(line.due(1.35), "abc");
    EXPECT_EQ(line.due(1.45), "d");
    EXPECT_EQ(line.due(1.55), "e");
}

TEST(Line, ALateTextDoesNotHoldUpOneThatIsDueEarlier)
{
    Line line(kTenPerSecond);
    line.send("late", 9);
    line.send("ab", 1);
    EXPECT_EQ(line.due(2), "ab");
    EXPECT_EQ(line.due(8.9), "");
    EXPECT_EQ(line.due(10), "late");
}

TEST(Line, ATextThatHasBegunIsNotInterrupted)
{
    Line line(kTenPerSecond);
    line.send("abcd", 1);
    EXPECT_EQ(line.due(1.15), "a");
    line.send("xy", 0.5);
    EXPECT_EQ(line.due(9), "bcdxy");
}

TEST(Line, CharactersWrittenAtOnceArriveAtThePaceOfTheWire)
{
    Line line(kTenPerSecond);
    EXPECT_NEAR(line.arrival(1), 1, 1e-9);
    EXPECT_NEAR(line.arrival(1), 1.1, 1e-9);
    EXPECT_NEAR(line.arrival(1), 1.2, 1e-9);
    EXPECT_NEAR(line.arrival(7), 7, 1e-9);
}

TEST(Line, HangsUpBehindTheTextAndForgetsTheRest)
{
    Line line(kTenPerSecond);
    line.send("ab", 1, true);
    line.send("cd", 1);
    EXPECT_EQ(line.due(1.1), "a");
    EXPECT_FALSE(line.takeHangUp());
    EXPECT_EQ(line.due(5), "b");
    EXPECT_TRUE(line.takeHangUp());
    EXPECT_FALSE(line.takeHangUp());
    EXPECT_EQ(line.due(50), "");
}

TEST(Line, HangsUpWithoutAText)
{
    Line line(kTenPerSecond);
    line.send("", 1, true);
    EXPECT_NEAR(line.nextDue().value_or(0), 1, 1e-9);
    EXPECT_EQ(line.due(1), "");
    EXPECT_TRUE(line.takeHangUp());
}

TEST(Line, KeepsNoMoreThanItCanSay)
{
    Line line(kTenPerSecond);
    std::size_t sent = 0;
    while (sent <= Line::kQueued && line.send(std::string(1000, 'x'), 0))
        sent += 1000;
    EXPECT_EQ(sent, (Line::kQueued / 1000 + 1) * 1000);
    EXPECT_EQ(line.due(1e9).size(), sent);
    EXPECT_TRUE(line.send("again", 0)) << "what is out makes room";
    line.clear();
    EXPECT_TRUE(line.send("again", 0));
}

} // namespace
} // namespace quorvelsim
