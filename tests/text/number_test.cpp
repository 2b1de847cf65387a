#include "text/number.h"

#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace quorvel::text {
namespace {

struct Reading {
    const char* name;
    std::string text;
    double value;
};

/// The name shown by CTest when a row of a table fails.
constexpr auto rowName = [](const auto& row) { return std::string(row.param.name); };

class ValReads : public testing::TestWithParam<Reading> {};

TEST_P(ValReads, TheLeadingNumber) { EXPECT_DOUBLE_EQ(Val(GetParam().text), GetParam().value); }

INSTANTIATE_TEST_SUITE_P(Plain, ValReads,
                         testing::Values(Reading{"Whole", "249", 249}, Reading{"LeadingZeros", "007", 7},
                                         Reading{"Decimals", "12.75", 12.75},
                                         Reading{"NoWholePart", ".5", 0.5}, Reading{"NoDecimals", "5.", 5},
                                         Reading{"Plus", "+3.5", 3.5}, Reading{"Minus", "-3.5", -3.5},
                                         Reading{"MinusPoint", "-.25", -0.25},
                                         Reading{"LastSingleDigit", "0.1", 0.1}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(Blanks, ValReads,
                         testing::Values(Reading{"Before", "  3.7abc", 3.7}, Reading{"Tab", "\t8", 8},
                                         Reading{"LineEnd", "\r\n8", 8}, Reading{"AfterSign", "- 5", -5},
                                         Reading{"InsideEndsIt", "12 34", 12}, Reading{"BeforeE", "1 E2", 1},
                                         Reading{"OnlyBlanks", "   ", 0},
                                         Reading{"SignAndBlanks", "-   ", 0}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(Exponents, ValReads,
                         testing::Values(Reading{"Lower", "1e3", 1000}, Reading{"Upper", "1E3", 1000},
                                         Reading{"Signed", "2.5E+2", 250}, Reading{"Negative", "25e-2", 0.25},
                                         Reading{"LettersAfter", "1E2x", 100}, Reading{"NoDigits", "1E", 1},
                                         Reading{"OnlySign", "1E+", 1}, Reading{"OtherLetter", "1D3", 1},
                                         Reading{"Second", "1E2E3", 100}, Reading{"Fraction", "1E2.5", 100},
                                         Reading{"Alone", "E5", 0},
                                         Reading{"Smallest", "4.9e-324", 4.9e-324}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(
    NoNumber, ValReads,
    testing::Values(Reading{"Empty", "", 0}, Reading{"Letters", "abc", 0}, Reading{"Point", ".", 0},
                    Reading{"SignAndPoint", "-.", 0}, Reading{"TwoSigns", "--5", 0},
                    Reading{"MixedSigns", "+-5", 0}, Reading{"Infinity", "inf", 0},
                    Reading{"NotANumber", "nan", 0}, Reading{"HexStopsAtX", "0x1F", 0},
                    Reading{"HexLiteral", "&H1F", 0}, Reading{"CommaEndsIt", "1,5", 1},
                    Reading{"SecondPointEndsIt", "1.2.3", 1.2}, Reading{"WideDigit", "\xEF\xBC\x95", 0},
                    Reading{"ZeroByte", std::string("1\0002", 3), 1}, Reading{"HighByte", "\xFF", 0}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    BeyondTheRange, ValReads,
    testing::Values(Reading{"TooLarge", "1E400", DBL_MAX}, Reading{"TooLargeNegative", "-1E400", -DBL_MAX},
                    Reading{"TooSmall", "1E-400", 0}, Reading{"TooSmallNegative", "-1E-400", 0},
                    Reading{"ManyDigits", std::string(400, '9'), DBL_MAX},
                    Reading{"ManyZeros", "0." + std::string(400, '0') + "1", 0},
                    Reading{"ManyDigitsLessExponent", "1" + std::string(400, '0') + "E-10", DBL_MAX},
                    Reading{"ManyZerosAndExponent", "0." + std::string(400, '0') + "1E+10", 0},
                    Reading{"ZeroWithExponent", "0E999", 0},
                    Reading{"ZeroWithLongExponent", "0E99999999999999999999", 0},
                    Reading{"LongExponent", "1E99999999999999999999", DBL_MAX},
                    Reading{"LongNegativeExponent", "1E-99999999999999999999", 0},
                    Reading{"BackInRange", "0." + std::string(400, '0') + "1E+401", 1}),
    rowName);

TEST(Val, IsNeverInfinite)
{
    for (const char* text : {"1E309", "-1E309", "1.8E308", "9E999999999999"}) {
        EXPECT_TRUE(std::isfinite(Val(text))) << text;
    }
}

TEST(IsNumber, TakesOneNumberWithBlanksAround)
{
    for (const char* text : {"5", " 5 ", "-5.25", "- 5", "1E3", ".5", "5.", "5\r\n"}) {
        EXPECT_TRUE(isNumber(text)) << text;
    }
}

TEST(IsNumber, RefusesAnythingElse)
{
    for (const char* text : {"", " ", "-", ".", "abc", "5x", "5 6", "1E", "1,5", "1.2.3", "0x10", "inf"}) {
        EXPECT_FALSE(isNumber(text)) << text;
    }
}

TEST(ToInt16, RoundsHalvesAwayFromZero)
{
    EXPECT_EQ(toInt16(0.5), 1);
    EXPECT_EQ(toInt16(1.5), 2);
    EXPECT_EQ(toInt16(2.5), 3);
    EXPECT_EQ(toInt16(-0.5), -1);
    EXPECT_EQ(toInt16(-2.5), -3);
    EXPECT_EQ(toInt16(0.49999999999999994), 0);
    EXPECT_EQ(toInt16(-0.4), 0);
    EXPECT_EQ(toInt16(249.4), 249);
}

TEST(ToInt16, KeepsToTheRange)
{
    EXPECT_EQ(toInt16(32767.4), 32767);
    EXPECT_EQ(toInt16(32767.5), 32767);
    EXPECT_EQ(toInt16(1e300), 32767);
    EXPECT_EQ(toInt16(-32768.4), -32768);
    EXPECT_EQ(toInt16(-1e300), -32768);
    EXPECT_EQ(toInt16(std::numeric_limits<double>::infinity()), 32767);
    EXPECT_EQ(toInt16(-std::numeric_limits<double>::infinity()), -32768);
    EXPECT_EQ(toInt16(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(IntegerOf, IsTheLeadingNumberRounded)
{
    EXPECT_EQ(integerOf("05"), 5);
    EXPECT_EQ(integerOf(" 8"), 8);
    EXPECT_EQ(integerOf("12.5"), 13);
    EXPECT_EQ(integerOf("-0.5"), -1);
    EXPECT_EQ(integerOf("249 or so"), 249);
    EXPECT_EQ(integerOf("99999"), 32767);
    EXPECT_EQ(integerOf("none"), 0);
    EXPECT_EQ(integerOf(""), 0);
}

struct Fixed {
    const char* name;
    double value;
    const char* pattern;
    const char* text;
};

class FormatWrites : public testing::TestWithParam<Fixed> {};

TEST_P(FormatWrites, TheFixedFormat)
{
    EXPECT_EQ(format(GetParam().value, GetParam().pattern), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Places, FormatWrites,
    testing::Values(Fixed{"Five", 1.5, "0.00000", "1.50000"}, Fixed{"Four", 12.5, "00.0000", "12.5000"},
                    Fixed{"Three", 123.4, "000.000", "123.400"},
                    Fixed{"LeadingZeros", 1.5, "000.000", "001.500"}, Fixed{"WholePart", 5, "00", "05"},
                    Fixed{"WholePartGrows", 249, "00", "249"},
                    Fixed{"GrowsBeforeThePoint", 1234.5, "0.0", "1234.5"}, Fixed{"Zero", 0, "0.000", "0.000"},
                    Fixed{"ZeroWhole", 0, "00", "00"}, Fixed{"MinusZeroIsZero", -0.0, "0.0", "0.0"},
                    Fixed{"BelowOne", 0.05, "0.000", "0.050"}, Fixed{"OneZero", 7, "0", "7"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    HalvesGoAwayFromZero, FormatWrites,
    testing::Values(
        Fixed{"OneDecimal", 1.25, "0.0", "1.3"}, Fixed{"Whole", 12.5, "00", "13"},
        Fixed{"DigitsAsWritten", 1.005, "0.00", "1.01"}, Fixed{"BinaryBelow", 2.675, "0.00", "2.68"},
        Fixed{"BinaryAbove", 0.15, "0.0", "0.2"}, Fixed{"HalfOfTheLastPlace", 0.005, "0.00", "0.01"},
        Fixed{"HalfToOne", 0.5, "0", "1"}, Fixed{"Negative", -1.25, "0.0", "-1.3"},
        Fixed{"NegativeWhole", -12.5, "00", "-13"}, Fixed{"JustBelow", 1.2499999999999998, "0.0", "1.2"},
        Fixed{"NineCarries", 9.999, "0.00", "10.00"}, Fixed{"NineAtWidth", 99.99996, "00.0000", "100.0000"},
        Fixed{"NinesFromNothing", 0.9996, "0.000", "1.000"}, Fixed{"SmallVanishes", 0.0004, "0.000", "0.000"},
        Fixed{"FarSmaller", 1e-300, "0.000", "0.000"}, Fixed{"SumOfTenths", 0.1 + 0.2, "0.0", "0.3"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(Signs, FormatWrites,
                         testing::Values(Fixed{"Minus", -1.5, "0.00000", "-1.50000"},
                                         Fixed{"MinusKeepsThePlaces", -12.5, "000.000", "-012.500"},
                                         Fixed{"MinusOfZerosIsKept", -0.0004, "0.000", "-0.000"},
                                         Fixed{"HashAddsNothing", -1.5, "#0.00000", "-1.50000"},
                                         Fixed{"HashIntercept", -0.0126, "#0.000", "-0.013"},
                                         Fixed{"HashZero", 0, "#0.000", "0.000"},
                                         Fixed{"HashBelowOne", 0.5, "#0.000", "0.500"},
                                         Fixed{"HashGrows", 12.3456, "#0.000", "12.346"},
                                         Fixed{"HashTwoZeros", -12.5, "#00.0000", "-12.5000"},
                                         Fixed{"HashTwoZerosShort", 1.5, "#00.0000", "01.5000"},
                                         Fixed{"HashThreeZeros", -123.4, "#000.000", "-123.400"}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(
    Extremes, FormatWrites,
    testing::Values(Fixed{"SeventeenDigits", 0.1234567890123456, "0.0000000000000000", "0.1234567890123456"},
                    Fixed{"Large", 1e21, "0", "1000000000000000000000"},
                    Fixed{"LargeDecimals", 1e16, "0.0", "10000000000000000.0"},
                    Fixed{"NotANumber", std::numeric_limits<double>::quiet_NaN(), "0.00", "0.00"},
                    Fixed{"Infinity", std::numeric_limits<double>::infinity(), "0.00", "0.00"},
                    Fixed{"MinusInfinity", -std::numeric_limits<double>::infinity(), "0.00", "0.00"}),
    rowName);

TEST(Format, SinglePrecisionRoundsTheDigitsItHas)
{
    EXPECT_EQ(format(1.005F, "0.00"), "1.01"); // as a double this value is 1.00499999523162841796875
    EXPECT_EQ(format(0.1F, "0.0000000000"), "0.1000000000");
    EXPECT_EQ(format(-1.25F, "0.0"), "-1.3");
    EXPECT_EQ(format(12.5F, "00"), "13");
    EXPECT_EQ(format(16777216.0F, "0"), "16777216");
    EXPECT_EQ(format(FLT_MAX, "0").size(), 39U);
    EXPECT_EQ(format(0.0F, "00.0"), "00.0");
}

TEST(Format, WholeNumbers)
{
    EXPECT_EQ(format(5, "00"), "05");
    EXPECT_EQ(format(-5, "00"), "-05");
    EXPECT_EQ(format(0, "0000"), "0000");
    EXPECT_EQ(format(7, "000.0"), "007.0");
    EXPECT_EQ(format(INT_MIN, "0"), "-2147483648");
}

TEST(Format, EveryThousandthReadsBackAsItself)
{
    for (int thousandths = -100000; thousandths <= 100000; thousandths += 7) {
        const double value = thousandths / 1000.0;
        ASSERT_DOUBLE_EQ(Val(format(value, "000.000")), value) << thousandths;
    }
}

struct General {
    const char* name;
    double value;
    const char* text;
};

class GeneralWrites : public testing::TestWithParam<General> {};

TEST_P(GeneralWrites, AsFewDigitsAsNeeded) { EXPECT_EQ(general(GetParam().value), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(Plain, GeneralWrites,
                         testing::Values(General{"Zero", 0, "0"}, General{"MinusZero", -0.0, "0"},
                                         General{"Whole", 8, "8"}, General{"Tens", 120, "120"},
                                         General{"Half", 0.5, "0.5"}, General{"MinusHalf", -0.5, "-0.5"},
                                         General{"Decimals", 12.375, "12.375"},
                                         General{"SumOfTenths", 0.1 + 0.2, "0.3"},
                                         General{"Third", 1.0 / 3, "0.333333333333333"},
                                         General{"TwoThirds", 2.0 / 3, "0.666666666666667"},
                                         General{"AlmostOne", 0.99999999999999989, "1"},
                                         General{"FifteenDigits", 123456789012345.0, "123456789012345"}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(
    Exponents, GeneralWrites,
    testing::Values(General{"LastWithout", 0.0001, "0.0001"}, General{"FirstSmall", 0.00001, "1E-05"},
                    General{"SmallDecimals", 0.000012345, "1.2345E-05"}, General{"Large", 1e15, "1E+15"},
                    General{"RoundsUpToLarge", 999999999999999.9, "1E+15"},
                    General{"LargeDecimals", -1.25e20, "-1.25E+20"}, General{"ThreePlaces", 1e100, "1E+100"},
                    General{"Smallest", 5e-324, "5E-324"},
                    General{"Largest", DBL_MAX, "1.79769313486232E+308"},
                    General{"RoundsUpToPlain", 0.000099999999999999999, "0.0001"}),
    rowName);

TEST(General, SinglePrecisionHasSevenDigits)
{
    EXPECT_EQ(general(0.1F), "0.1");
    EXPECT_EQ(general(1.0F / 3), "0.3333333");
    EXPECT_EQ(general(-12.375F), "-12.375");
    EXPECT_EQ(general(1234567.0F), "1234567");
    EXPECT_EQ(general(1e7F), "1E+07");
    EXPECT_EQ(general(0.00001F), "1E-05");
    EXPECT_EQ(general(0.0F), "0");
}

TEST(General, WholeNumbers)
{
    EXPECT_EQ(general(8), "8");
    EXPECT_EQ(general(0), "0");
    EXPECT_EQ(general(-240), "-240");
    EXPECT_EQ(general(INT_MIN), "-2147483648");
}

TEST(General, WhatIsNotFiniteIsZero)
{
    EXPECT_EQ(general(std::numeric_limits<double>::quiet_NaN()), "0");
    EXPECT_EQ(general(std::numeric_limits<double>::infinity()), "0");
    EXPECT_EQ(general(-std::numeric_limits<double>::infinity()), "0");
}

TEST(HexDigitValue, KnowsBothCases)
{
    EXPECT_EQ(hexDigitValue('0'), 0);
    EXPECT_EQ(hexDigitValue('9'), 9);
    EXPECT_EQ(hexDigitValue('A'), 10);
    EXPECT_EQ(hexDigitValue('F'), 15);
    EXPECT_EQ(hexDigitValue('a'), 10);
    EXPECT_EQ(hexDigitValue('f'), 15);
}

TEST(HexDigitValue, RefusesTheNeighboursOfDigits)
{
    for (const char c : {'/', ':', '@', 'G', '`', 'g', ' ', '\0', '\xFF'}) {
        EXPECT_EQ(hexDigitValue(c), -1) << static_cast<int>(c);
    }
}

TEST(HexNumber, ReadsOneToSevenDigits)
{
    EXPECT_EQ(hexNumber("0"), 0);
    EXPECT_EQ(hexNumber("F9"), 249);
    EXPECT_EQ(hexNumber("f9"), 249);
    EXPECT_EQ(hexNumber("0010"), 16);
    EXPECT_EQ(hexNumber("FFFFFFF"), 0xFFFFFFF);
}

TEST(HexNumber, RefusesWhatIsNoNumberOrTooLong)
{
    for (const char* text : {"", " ", "G", "1G", "0x1", "-1", " 1", "1 ", "00000001"}) {
        EXPECT_EQ(hexNumber(text), -1) << text;
    }
}

TEST(AllDigits, IsTrueForDecimalDigitsOnly)
{
    EXPECT_TRUE(allDigits("0"));
    EXPECT_TRUE(allDigits("0123456789"));
    for (const char* text : {"", " ", "1 ", " 1", "-1", "1.0", "A", "\xB2"}) {
        EXPECT_FALSE(allDigits(text)) << text;
    }
}

/// A place where the point is a comma and thousands are parted, as a program started in such a country sees it.
class InACountryWithCommas : public testing::Test {
protected:
    struct Commas : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    void SetUp() override
    {
        // what the machine has of it: the C library's own locale may be missing, the C++ one is ours
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "German_Germany.1252"}) {
            if (std::setlocale(LC_ALL, name) != nullptr) break;
        }
        before_ = std::locale::global(std::locale(std::locale::classic(), new Commas));
    }

    void TearDown() override
    {
        std::locale::global(before_);
        std::setlocale(LC_ALL, "C");
    }

    std::locale before_;
};

TEST_F(InACountryWithCommas, ThePointStaysAPoint)
{
    std::ostringstream control;
    control << 1234.5;
    ASSERT_EQ(control.str(), "1.234,5") << "the locale of this test is not in force";

    EXPECT_DOUBLE_EQ(Val("1234.5"), 1234.5);
    EXPECT_DOUBLE_EQ(Val("1234,5"), 1234);
    EXPECT_EQ(format(1234.5, "0.00"), "1234.50");
    EXPECT_EQ(format(1234.5F, "0.00"), "1234.50");
    EXPECT_EQ(general(1234.5), "1234.5");
    EXPECT_EQ(general(-1e20), "-1E+20");
    EXPECT_TRUE(isNumber("1234.5"));
    EXPECT_FALSE(isNumber("1234,5"));
}

} // namespace
} // namespace quorvel::text
