#include "settings/switches.h"

#include <gtest/gtest.h>

namespace quorvel::settings {
namespace {

TEST(Switches, SetFrames)
{
    EXPECT_EQ(switchSet(kInvertX, "01", true).frame, ":01770301FF\r\n");
    EXPECT_EQ(switchSet(kInvertX, "01", false).frame, ":01770300FF\r\n");
    EXPECT_EQ(switchSet(kInvertY, "01", true).frame, ":01770501FF\r\n");
    EXPECT_EQ(switchSet(kInvertY, "01", false).frame, ":01770500FF\r\n");
    EXPECT_EQ(switchSet(kInvertZ, "01", true).frame, ":01770701FF\r\n");
    EXPECT_EQ(switchSet(kInvertZ, "01", false).frame, ":01770700FF\r\n");
    EXPECT_EQ(switchSet(kSwap, "01", true).frame, ":01770101FF\r\n");
    EXPECT_EQ(switchSet(kSwap, "01", false).frame, ":01770100FF\r\n");
}

TEST(Switches, QueryFrames)
{
    EXPECT_EQ(switchQuery(kInvertX, "01").frame, ":017704FF\r\n");
    EXPECT_EQ(switchQuery(kInvertY, "01").frame, ":017706FF\r\n");
    EXPECT_EQ(switchQuery(kInvertZ, "01").frame, ":017708FF\r\n");
    EXPECT_EQ(switchQuery(kSwap, "01").frame, ":017702FF\r\n");
}

TEST(Switches, NineCharactersOfTheEchoCount)
{
    const auto exchange = switchSet(kInvertX, "01", true);
    EXPECT_EQ(exchange.replyLength, 13);
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
    EXPECT_STREQ(kInvertX.offText, "X direction invert function closed!");
    EXPECT_STREQ(kInvertX.onText, "X direction invert function opened!");
    EXPECT_STREQ(kInvertY.offText, "Y direction invert function closed!");
    EXPECT_STREQ(kInvertY.onText, "Z direction invert function opened!");
    EXPECT_STREQ(kInvertZ.offText, "Z direction invert function closed!");
    EXPECT_STREQ(kInvertZ.onText, "Z direction invert function opened!");
    EXPECT_STREQ(kSwap.offText, "X and Y isn't swaped!");
    EXPECT_STREQ(kSwap.onText, "X and Y has swaped!");
}

} // namespace
} // namespace quorvel::settings
