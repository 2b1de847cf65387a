#include "protocol/stitching.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

TEST(Stitching, QueryFrameNamesTheReadout) { EXPECT_EQ(locationQuery("01").frame, ":017822FF\r\n"); }

TEST(Stitching, SetFrameCarriesTheLocationAsTyped)
{
    EXPECT_EQ(locationSet("01", "0512").frame, ":0178210512FF\r\n");
    EXPECT_EQ(locationSet("01", "abcd").frame, ":017821abcdFF\r\n");
    EXPECT_EQ(locationSet("01", " 1234").frame, ":017821 1234FF\r\n");
}

TEST(Stitching, LocationIsAnyFourCharacters)
{
    for (const auto* good : {"0512", "abcd", " 1234", "1234  ", "1 34"}) {
        EXPECT_TRUE(isLocation(good)) << good;
    }
    for (const auto* bad : {"", "    ", "123", "12345", " 123 ", "\t123\t"}) {
        EXPECT_FALSE(isLocation(bad)) << bad;
    }
}

TEST(Stitching, LocationStandsAtTheEighthCharacter)
{
    EXPECT_EQ(locationOf(":0178220512FF\r\n"), "0512");
    EXPECT_EQ(locationOf(":017822?~ zFF\r\n"), "?~ z");
    EXPECT_EQ(locationOf(":01782205"), "05");
    EXPECT_EQ(locationOf(""), "");
}

TEST(Stitching, EchoIsComparedInItsFirstElevenCharacters)
{
    const auto set = locationSet("01", "0512");
    EXPECT_TRUE(confirms(set, ":0178210512FF\r\n"));
    EXPECT_TRUE(confirms(set, ":0178210512xxxx"));
    EXPECT_FALSE(confirms(set, ":0178210513FF\r\n"));
    EXPECT_FALSE(confirms(set, ":0278210512FF\r\n"));
    EXPECT_FALSE(confirms(set, ":0178220512FF\r\n"));
    EXPECT_FALSE(confirms(set, ""));
}

TEST(Stitching, EchoOfABlankInFrontIsComparedUpToTheThirdDigit)
{
    EXPECT_TRUE(confirms(locationSet("01", " 1234"), ":017821 123FF\r\n"));
}

} // namespace
} // namespace quorvel::protocol
