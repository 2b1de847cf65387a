#include "sim/text.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

struct FieldCase {
    double value;
    const char* reading;
    const char* record;
};

class Fields : public testing::TestWithParam<FieldCase> {};

TEST_P(Fields, HaveEightCharacters)
{
    EXPECT_EQ(readingField(GetParam().value), GetParam().reading);
    EXPECT_EQ(recordField(GetParam().value), GetParam().record);
}

INSTANTIATE_TEST_SUITE_P(
    Values, Fields,
    testing::Values(FieldCase{0, "+0.00000", "+000.000"}, FieldCase{1.5, "+1.50000", "+001.500"},
                    FieldCase{-1.5, "-1.50000", "-001.500"}, FieldCase{-0.0000001, "+0.00000", "+000.000"},
                    FieldCase{9.999999, "+10.0000", "+010.000"}, FieldCase{12.5, "+12.5000", "+012.500"},
                    FieldCase{99.99999, "+100.000", "+100.000"}, FieldCase{-123.4, "-123.400", "-123.400"},
                    FieldCase{5000, "+999.999", "+999.999"}, FieldCase{-5000, "-999.999", "-999.999"}));

TEST(SignedNumber, IsASignDigitsAndAtMostOnePoint)
{
    EXPECT_EQ(signedNumber("+001.500"), 1.5);
    EXPECT_EQ(signedNumber("-12.5000"), -12.5);
    for (const char* bad :
         {"", "+", "-.", "1.5", "+1.5.0", "+1,50000", "+ 1.5000", "+1E+0000", "+nan0000", "++1.5000"})
        EXPECT_FALSE(signedNumber(bad)) << bad;
}

TEST(Hex, TakesBothCasesAndWritesUpper)
{
    EXPECT_EQ(hexByte("f9"), 249);
    EXPECT_EQ(hexByte("0A"), 10);
    EXPECT_EQ(twoHex(249), "F9");
    EXPECT_EQ(twoHex(5), "05");
    for (const char* bad : {"", "5", "005", "G1", "-1", " 5", "0x"})
        EXPECT_FALSE(hexByte(bad)) << bad;
}

TEST(Decimal, RefusesAllButDigits)
{
    EXPECT_EQ(decimal("0199"), 199);
    for (const char* bad : {"", "-1", " 1", "1.0", "1234567890", "12a"})
        EXPECT_FALSE(decimal(bad)) << bad;
}

TEST(Mid, GivesWhatThereIs)
{
    EXPECT_EQ(mid("abcdef", 2, 3), "bcd");
    EXPECT_EQ(mid("abc", 3, 9), "c");
    EXPECT_EQ(mid("abc", 4, 1), "");
    EXPECT_EQ(mid("abc", 0, 1), "");
}

} // namespace
} // namespace quorvelsim
