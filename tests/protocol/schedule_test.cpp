#include "protocol/schedule.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {

namespace {

TEST(AutoMode, QueryFrame) { EXPECT_EQ(modeQuery("01").frame, ":0106FF\r\n"); }

TEST(AutoMode, IntervalReplyIsTold)
{
    const auto mode = readMode(":01060100050000FF\r\n");
    EXPECT_TRUE(mode.isInterval());
    EXPECT_EQ(modeText(mode), "Current Interval is 0 hours 5 minutes 0 seconds");
}

TEST(AutoMode, FixedTimesReplyIsTold)
{
    EXPECT_EQ(modeText(readMode(":01060208121620FF\r\n")),
              "Current AutoReading Mode is fixed time every day at 8,12,16,20 o'clock.");
}

TEST(AutoMode, OnlyAWholeReplyOfDigitsIsPlain)
{
    EXPECT_TRUE(isPlainModeReply(":01060101000000FF\r\n"));
    EXPECT_TRUE(isPlainModeReply(":01060008121620FF\r\n"));
    for (const auto* reply :
         {"", ":0106", ":01060101000000FF\r", ":01060101000000FF\r\n:", "~01060101000000FF\r\n",
          ":01220101000000FF\r\n", ":01060101 00000FF\r\n", ":0106010100000~FF\r\n"})
        EXPECT_FALSE(isPlainModeReply(reply)) << reply;
}

TEST(AutoMode, QuestionFollowsOnALineOfItsOwn)
{
    EXPECT_EQ(modeQuestion(readMode(":01060101000000FF\r\n")),
              "Current Interval is 1 hours 0 minutes 0 seconds\r\nChange AutoReading Mode?");
}

struct ReplyCase {
    const char* name;
    std::string reply;
    int mode;
    std::array<std::int16_t, 4> values;
};

class ModeReplies : public ::testing::TestWithParam<ReplyCase> {};

TEST_P(ModeReplies, AreReadByPosition)
{
    const auto mode = readMode(GetParam().reply);
    EXPECT_EQ(mode.mode, GetParam().mode);
    EXPECT_EQ(mode.values, GetParam().values);
}

INSTANTIATE_TEST_SUITE_P(
    Mode, ModeReplies,
    ::testing::Values(ReplyCase{"Nothing", "", 0, {0, 0, 0, 0}},
                      ReplyCase{"Mode00", ":01060008121620FF\r\n", 0, {8, 12, 16, 20}},
                      ReplyCase{"NoNumberAsMode", ":0106XY08121620FF\r\n", 0, {8, 12, 16, 20}},
                      ReplyCase{"Blanks", ":0106 1 1 2 3 4FF\r\n", 1, {1, 2, 3, 4}},
                      ReplyCase{"OneCharacterShort", ":01060100050000FF\r", 1, {0, 5, 0, 0}},
                      ReplyCase{"CutInAField", ":010601001", 1, {0, 1, 0, 0}},
                      ReplyCase{"CutBeforeTheMode", ":0106", 0, {0, 0, 0, 0}},
                      ReplyCase{"OneCharacterLong", ":01060100050000FF\r\n0", 1, {0, 5, 0, 0}},
                      ReplyCase{"TwoReplies", ":01060100050000FF\r\n:01060100200000FF\r\n", 1, {0, 5, 0, 0}},
                      ReplyCase{"Noise", "\xFF\x80~~:\x01\x02\x03\x04\x05\x06\x07??", 0, {0, 0, 0, 0}},
                      ReplyCase{"NoiseBefore", "~~:01060100050000FF", 6, {1, 0, 5, 0}}),
    [](const auto& tested) { return tested.param.name; });

class Intervals : public ::testing::TestWithParam<std::tuple<int, const char*, const char*>> {};

TEST_P(Intervals, CarryTheirCode)
{
    const auto [position, entry, frame] = GetParam();
    EXPECT_EQ(kIntervals[position].entry, entry);
    EXPECT_EQ(intervalSet("01", position).frame, std::string(frame) + "\r\n");
}

INSTANTIATE_TEST_SUITE_P(Mode, Intervals,
                         ::testing::Values(std::tuple(0, "20 seconds", ":01050100002000FF"),
                                           std::tuple(1, "01 minute", ":01050100010000FF"),
                                           std::tuple(2, "02 minutes", ":01050100020000FF"),
                                           std::tuple(3, "05 minutes", ":01050100050000FF"),
                                           std::tuple(4, "10 minutes", ":01050100100000FF"),
                                           std::tuple(5, "20 minutes", ":01050100200000FF"),
                                           std::tuple(6, "30 minutes", ":01050100300000FF"),
                                           std::tuple(7, "01 hour", ":01050101000000FF")));

TEST(Interval, FrameCarriesNoCodeWhenNothingIsSelected)
{
    EXPECT_EQ(intervalSet("0A", -1).frame, ":0A0501FF\r\n");
    EXPECT_EQ(intervalSet("0A", 8).frame, ":0A0501FF\r\n");
}

TEST(Interval, AnyCodeCanBeSent) { EXPECT_EQ(intervalSet("01", "02034500").frame, ":01050102034500FF\r\n"); }

} // namespace

} // namespace quorvel::protocol
