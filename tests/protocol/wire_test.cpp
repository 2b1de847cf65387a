#include "protocol/wire.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

std::string setFrame(std::string_view diameter, std::string_view error, bool selfCalibration = true)
{
    return wireSet("01", {tenthsOf(diameter), tenthsOf(error), selfCalibration}).frame;
}

TEST(Wire, SetFrameCarriesTenthsAndTheFlag)
{
    EXPECT_EQ(setFrame("1.5", "0.3"), ":01671503010000FF\r\n");
    EXPECT_EQ(setFrame("1.5", "0.3", false), ":01671503000000FF\r\n");
    EXPECT_EQ(setFrame("0", "0"), ":01670000010000FF\r\n");
}

TEST(Wire, AnyNineteenCharactersConfirmASet)
{
    const auto exchange = wireSet("01", {15, 3, true});
    EXPECT_EQ(exchange.reply.count, 19);
    EXPECT_TRUE(confirms(exchange, "~~~~~~~~~~~~~~~~~~~"));
}

TEST(Wire, HalfATenthRoundsAwayFromZero)
{
    EXPECT_EQ(setFrame("1.25", "0.35"), ":01671304010000FF\r\n");
    EXPECT_EQ(setFrame("1.24", "0.34"), ":01671203010000FF\r\n");
}

TEST(Wire, TenMillimetresMakeTheFrameLonger)
{
    EXPECT_EQ(setFrame("12.3", "0.3"), ":016712303010000FF\r\n");
    EXPECT_EQ(setFrame("-1.5", "0.3"), ":0167-1503010000FF\r\n");
}

TEST(Wire, OnlyTwoDigitsFitTheirField)
{
    EXPECT_TRUE(fitsWireField(tenthsOf("0")));
    EXPECT_TRUE(fitsWireField(tenthsOf("9.94")));
    EXPECT_FALSE(fitsWireField(tenthsOf("9.95")));
    EXPECT_FALSE(fitsWireField(tenthsOf("12.3")));
    EXPECT_FALSE(fitsWireField(tenthsOf("-1")));
}

TEST(Wire, DiameterThatIsNoNumberIsRefused)
{
    for (const auto* text : {"abc", "", "0.0", "00", " 0", "+0"})
        EXPECT_STREQ(wireInputError(text, "0.3"), "Diameter Input Error") << text;
}

TEST(Wire, PermittedErrorThatIsNoNumberIsRefused)
{
    for (const auto* text : {"abc", "", "0.0"})
        EXPECT_STREQ(wireInputError("1.5", text), "Permitted Error Input Error") << text;
    EXPECT_STREQ(wireInputError("", ""), "Diameter Input Error");
}

TEST(Wire, LeadingNumberCountsAndZeroIsTypedPlain)
{
    for (const auto* text : {"0", "1.5mm", "-2", "12.3", "1e1"})
        EXPECT_EQ(wireInputError(text, text), nullptr) << text;
}

TEST(Wire, NumbersBeyondSinglePrecisionStayFinite)
{
    EXPECT_GT(tenthsOf("1e300"), 3e38F);
    EXPECT_LT(tenthsOf("-1e300"), -3e38F);
    EXPECT_EQ(setFrame("1e300", "0.3").substr(0, 12), ":01673402823");
}

TEST(Wire, QueryFrame) { EXPECT_EQ(wireQuery("0C").frame, ":0C68FF\r\n"); }

TEST(Wire, QueryShowsBothLengthsInMillimetres)
{
    const auto wire = wireOf(":01681503010000FF\r\n");
    ASSERT_TRUE(wire);
    EXPECT_EQ(wireText(*wire, true), "Diameter and permitted Error is set as 1.5mm, 0.3mm\r\n");
}

TEST(Wire, FactoryEditionReportsSelfCalibration)
{
    const auto on = wireOf(":01681503010000FF\r\n");
    const auto off = wireOf(":01681503020000FF\r\n");
    ASSERT_TRUE(on && off);
    EXPECT_EQ(wireText(*on, false), "Diameter and permitted Error is set as 1.5mm, 0.3mm\r\n"
                                    "Auto Self Calibration Function is turned ON.");
    EXPECT_EQ(wireText(*off, false), "Diameter and permitted Error is set as 1.5mm, 0.3mm\r\n"
                                     "Auto Self Calibration Function is turned OFF.");
}

TEST(Wire, ReplyWithoutNumbersHoldsNoParameters)
{
    EXPECT_FALSE(wireOf(":0168XY03010000FF\r\n"));
    EXPECT_FALSE(wireOf(":016815XY010000FF\r\n"));
    EXPECT_FALSE(wireOf(""));
    EXPECT_FALSE(wireOf(":016815"));
    EXPECT_FALSE(wireOf(std::string(40, '\xff')));
}

TEST(Wire, OnlyDigitsAndAStateArePlain)
{
    EXPECT_TRUE(isPlainWireReply(":01681503010000FF\r\n"));
    EXPECT_TRUE(isPlainWireReply(":01681503000000FF\r\n"));
    for (const auto* reply : {"", ":016815", ":0168-503010000FF\r\n", ":01681.03010000FF\r\n",
                              ":016815 3010000FF\r\n", ":01681503020000FF\r\n", ":016815030"})
        EXPECT_FALSE(isPlainWireReply(reply)) << reply;
}

} // namespace
} // namespace quorvel::protocol
