#include "protocol/offset.h"

#include "text/number.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quorvel::protocol {
namespace {

struct ValueCase {
    const char* name;
    double value;
    const char* written;
};

class SignedValue : public ::testing::TestWithParam<ValueCase> {};

TEST_P(SignedValue, IsASignAndSevenPlaces)
{
    for (const auto& direction : kOffsets)
        EXPECT_EQ(signedValue(direction, GetParam().value), GetParam().written)
            << nameOf(direction.direction);
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, SignedValue,
    ::testing::Values(
        ValueCase{"Zero", 0, "+0.00000"}, ValueCase{"NegativeZero", -0.0, "+0.00000"},
        ValueCase{"BelowTen", 1.5, "+1.50000"}, ValueCase{"Ten", 10, "+10.0000"},
        ValueCase{"BelowHundred", 12.5, "+12.5000"}, ValueCase{"Hundred", 100, "+100.000"},
        ValueCase{"AboveHundred", 123.4, "+123.400"}, ValueCase{"MinusBelowTen", -1.5, "-1.50000"},
        ValueCase{"MinusTen", -10, "-10.0000"}, ValueCase{"MinusBelowHundred", -12.5, "-12.5000"},
        ValueCase{"MinusHundred", -100, "-100.000"}, ValueCase{"MinusAboveHundred", -123.4, "-123.400"},
        ValueCase{"Fifth", 1.234565, "+1.23457"}, ValueCase{"Tiny", 0.000001, "+0.00000"},
        ValueCase{"MinusTiny", -0.000001, "-0.00000"}, ValueCase{"StaysBelowTen", 9.999994, "+9.99999"},
        ValueCase{"RoundsUpToTen", 9.999996, "+10.0000"},
        ValueCase{"RoundsUpToHundred", 99.99996, "+100.000"},
        ValueCase{"MinusRoundsUpToTen", -9.999996, "-10.0000"},
        ValueCase{"MinusRoundsUpToHundred", -99.99996, "-100.000"},
        ValueCase{"WouldRoundUpToThousand", 999.9996, "+999.999"},
        ValueCase{"MinusWouldRoundUpToThousand", -999.9996, "-999.999"},
        ValueCase{"Thousand", 1000, "+1000.000"}, ValueCase{"MinusThousand", -1234.5678, "-1234.568"}),
    [](const auto& instance) { return instance.param.name; });

TEST(Offset, EveryValueBelowAThousandHasEightCharacters)
{
    for (double value = -999.9999; value < 1000; value += 0.377)
        ASSERT_EQ(signedValue(kX, value).size(), 8U) << value;
    for (const double border : {10.0, 100.0, 1000.0})
        for (const double sign : {-1.0, 1.0})
            ASSERT_EQ(signedValue(kY, sign * std::nextafter(border, 0)).size(), 8U) << border;
}

TEST(Offset, FramesOfTheDirections)
{
    EXPECT_EQ(offsetSet(kX, "01", "+1.50000").frame, ":0171+1.50000FF\r\n");
    EXPECT_EQ(offsetSet(kY, "01", "+1.50000").frame, ":0173+1.50000FF\r\n");
    EXPECT_EQ(offsetSet(kZ, "01", "+1.50000").frame, ":017805+1.50000FF\r\n");
    EXPECT_EQ(offsetQuery(kX, "01").frame, ":0172FF\r\n");
    EXPECT_EQ(offsetQuery(kY, "01").frame, ":0174FF\r\n");
    EXPECT_EQ(offsetQuery(kZ, "01").frame, ":017806FF\r\n");
}

TEST(Offset, TextWithoutNumberIsZero)
{
    for (const auto* text : {"", "abc", "0"})
        EXPECT_EQ(offsetSet(kX, "01", signedValue(kX, text::Val(text))).frame, ":0171+0.00000FF\r\n");
}

TEST(Offset, EchoCoversTheWholeValueAndNoMore)
{
    for (const auto& direction : kOffsets) {
        const auto exchange = offsetSet(direction, "01", "+1.50000");
        auto reply = exchange.frame;
        EXPECT_EQ(reply.size(), static_cast<std::size_t>(exchange.reply.count));
        const auto end = static_cast<std::size_t>(exchange.echoLength);
        EXPECT_TRUE(confirms(exchange, reply));
        reply[end] = '~';
        EXPECT_TRUE(confirms(exchange, reply)) << nameOf(direction.direction);
        reply[end - 1] = '~';
        EXPECT_FALSE(confirms(exchange, reply)) << nameOf(direction.direction);
    }
    EXPECT_EQ(command(kX.set).echoLength, 13);
    EXPECT_EQ(command(kY.set).echoLength, 13);
    EXPECT_EQ(command(kZ.set).echoLength, 15);
}

TEST(Offset, ValueOfAReplyStandsBehindTheCommandDigits)
{
    EXPECT_EQ(offsetOf(kX, ":0172+1.50000FF\r\n"), "+1.50000");
    EXPECT_EQ(offsetOf(kY, ":0174-12.5000FF\r\n"), "-12.5000");
    EXPECT_EQ(offsetOf(kZ, ":017806+100.000FF\r\n"), "+100.000");
    EXPECT_EQ(offsetOf(kX, "~~~~~~~~~~~~~~~~~"), "~~~~~~~~");
    EXPECT_EQ(offsetOf(kZ, ":0178"), "");
}

TEST(Offset, SignedValueIsASignAndSevenPlaces)
{
    for (const auto* good : {"+1.50000", "-12.5000", "+999.999", "-0000000"})
        EXPECT_TRUE(isSignedValue(good)) << good;
    for (const auto* bad : {"", "+", "1.500000", "+1.5000", "+1.500000", " +1.5000", "+ 1.5000", "+1.5000 ",
                            "+1.50.00", "+1E+0005", "++1.5000", "+.......", "+1,50000", "~~~~~~~~"})
        EXPECT_FALSE(isSignedValue(bad)) << bad;
    EXPECT_FALSE(isSignedValue("+1.500\r\n"));
}

TEST(Offset, QueryTexts)
{
    EXPECT_EQ(offsetText(kX, "+1.50000"), "The reference of X-Direction is +1.50000!");
    EXPECT_EQ(offsetText(kY, "+1.50000"), "The offset of Y-Direction is +1.50000!");
    EXPECT_EQ(offsetText(kZ, "+1.50000"), "The offset of Z-Direction is +1.50000!");
}

TEST(Offset, DirectionsOfTheTypes)
{
    using link::TypeA, link::TypeB, link::TypeC, link::TypeD;
    for (const auto type : {TypeA, TypeB, TypeC, TypeD}) {
        EXPECT_TRUE(hasDirection(type, Direction::X));
        EXPECT_EQ(hasDirection(type, Direction::Y), type != TypeD);
        EXPECT_EQ(hasDirection(type, Direction::Z), type == TypeC);
    }
}

} // namespace
} // namespace quorvel::protocol
