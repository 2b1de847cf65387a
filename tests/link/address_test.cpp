#include "link/address.h"

#include <gtest/gtest.h>

namespace quorvel::link {
namespace {

struct Case {
    const char* text;
    const char* expected;
};

TEST(Address, IsTwoUpperCaseHexadecimalDigits)
{
    for (const auto& [text, expected] : {Case{"1", "01"},
                                         {"5", "05"},
                                         {"10", "0A"},
                                         {"249", "F9"},
                                         {"255", "FF"},
                                         {"256", "00"},
                                         {"0", "00"},
                                         {"05", "05"},
                                         {" 12 ", "0C"},
                                         {"", "00"},
                                         {"abc", "00"},
                                         {"1.5", "02"},
                                         {"-1", "FF"},
                                         {"99999", "FF"}}) {
        EXPECT_EQ(AddressToHex(text), expected) << text;
    }
    EXPECT_EQ(AddressToHex(249), "F9");
}

TEST(Address, InATextIsOneThatAReadoutCanHaveOrNone)
{
    struct Typed {
        const char* text;
        int expected;
    };
    for (const auto& [text, expected] : {Typed{"5", 5},
                                         {" 12 ", 12},
                                         {"249", 249},
                                         {"250", 0},
                                         {"0", 0},
                                         {"-5", 0},
                                         {"", 0},
                                         {"abc", 0},
                                         {"99999", 0}}) {
        EXPECT_EQ(addressIn(text), expected) << text;
    }
}

TEST(Address, DecToHexHasNoLeadingZeroAndAtMostTwoDigits)
{
    for (const auto& [text, expected] :
         {Case{"5", "5"}, {"16", "10"}, {"255", "FF"}, {"4095", "FF"}, {"0", "0"}}) {
        EXPECT_EQ(DecToHex(text), expected) << text;
    }
}

TEST(Address, HexToAddressReadsEitherCaseAndCountsOthersAsZero)
{
    for (const auto& [text, expected] : {Case{"F9", "249"},
                                         {"0a", "10"},
                                         {"0A", "10"},
                                         {"05", "05"},
                                         {"G1", "01"},
                                         {"", "00"},
                                         {"-1", "01"}}) {
        EXPECT_EQ(HexToAddress(text), expected) << text;
    }
}

TEST(Address, HexToDecReadsUpToSevenDigits)
{
    for (const auto& [text, expected] :
         {Case{"FFFFFFF", "268435455"}, {"10", "16"}, {"7", "7"}, {"FFFFFFFFFFFF", "268435455"}}) {
        EXPECT_EQ(HexToDec(text), expected) << text;
    }
}

} // namespace
} // namespace quorvel::link
