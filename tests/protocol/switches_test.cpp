#include "protocol/switches.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

TEST(Switches, SetFrames)
{
    EXPECT_EQ(switchSet(kSwitches[kInvertXRow], "01", true).frame, ":01770301FF\r\n");
    EXPECT_EQ(switchSet(kSwitches[kInvertXRow], "01", false).frame, ":01770300FF\r\n");
    EXPECT_EQ(switchSet(kSwitches[kInvertYRow], "01", true).frame, ":01770501FF\r\n");
    EXPECT_EQ(switchSet(kSwitches[kInvertYRow], "01", false).frame, ":01770500FF\r\n");
    EXPECT_EQ(switchSet(kSwitches[kInvertZRow], "01", true).frame, ":01770701FF\r\n");
    EXPECT_EQ(switchSet(kSwitches[kInvertZRow], "01", false).frame, ":01770700FF\r\n");
    EXPECT_EQ(switchSet(kSwap, "01", true).frame, ":01770101FF\r\n");
    EXPECT_EQ(switchSet(kSwap, "01", false).frame, ":01770100FF\r\n");
}

TEST(Switches, QueryFrames)
{
    EXPECT_EQ(switchQuery(kSwitches[kInvertXRow], "01").frame, ":017704FF\r\n");
    EXPECT_EQ(switchQuery(kSwitches[kInvertYRow], "01").frame, ":017706FF\r\n");
    EXPECT_EQ(switchQuery(kSwitches[kInvertZRow], "01").frame, ":017708FF\r\n");
    EXPECT_EQ(switchQuery(kSwap, "01").frame, ":017702FF\r\n");
}

TEST(Switches, NineCharactersOfTheEchoCount)
{
    const auto exchange = switchSet(kSwitches[kInvertXRow], "01", true);
    EXPECT_EQ(exchange.reply.count, 13);
    EXPECT_TRUE(confirms(exchange, ":01770301FF\r\n"));
    EXPECT_TRUE(confirms(exchange, ":01770301~~~~"));
    EXPECT_FALSE(confirms(exchange, ":01770300FF\r\n"));
}

TEST(Switches, StateIsZeroOneOrNothing)
{
    EXPECT_EQ(switchStateOf(":01770400FF\r\n"), false);
    EXPECT_EQ(switchStateOf(":01770401FF\r\n"), true);
    EXPECT_EQ(switchStateOf(":01770402FF\r\n"), std::nullopt);
    EXPECT_EQ(switchStateOf(":0177040"), std::nullopt);
    EXPECT_EQ(switchStateOf(""), std::nullopt);
}

TEST(Switches, QueryTextsWithTheirOddities)
{
    EXPECT_STREQ(kSwitches[kInvertXRow].offText, "X direction invert function closed!");
    EXPECT_STREQ(kSwitches[kInvertXRow].onText, "X direction invert function opened!");
    EXPECT_STREQ(kSwitches[kInvertYRow].offText, "Y direction invert function closed!");
    EXPECT_STREQ(kSwitches[kInvertYRow].onText, "Z direction invert function opened!");
    EXPECT_STREQ(kSwitches[kInvertZRow].offText, "Z direction invert function closed!");
    EXPECT_STREQ(kSwitches[kInvertZRow].onText, "Z direction invert function opened!");
    EXPECT_STREQ(kSwap.offText, "X and Y isn't swaped!");
    EXPECT_STREQ(kSwap.onText, "X and Y has swaped!");
}

} // namespace
} // namespace quorvel::protocol
