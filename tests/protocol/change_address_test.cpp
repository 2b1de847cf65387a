#include "protocol/change_address.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

TEST(ChangeAddress, FrameCarriesBothAddressesInHexadecimal)
{
    EXPECT_EQ(addressChange(5, 12).frame, ":05020CFF\r\n");
    EXPECT_EQ(addressChange(1, 249).frame, ":0102F9FF\r\n");
}

TEST(ChangeAddress, OldAddressIsLookedAtFirst)
{
    EXPECT_STREQ(addressChangeError(0, 250), "Old Address Input Error");
    EXPECT_STREQ(addressChangeError(250, 0), "Old Address Input Error");
    EXPECT_STREQ(addressChangeError(-1, 5), "Old Address Input Error");
}

TEST(ChangeAddress, NewAddressIsOneToTwoHundredAndFortyNine)
{
    EXPECT_STREQ(addressChangeError(5, 0), "New Address Input Error");
    EXPECT_STREQ(addressChangeError(5, 250), "New Address Input Error");
    EXPECT_EQ(addressChangeError(5, 1), nullptr);
    EXPECT_EQ(addressChangeError(5, 249), nullptr);
}

TEST(ChangeAddress, SameAddressNeedsNoChange)
{
    EXPECT_STREQ(addressChangeError(7, 7), "New Address is same as Old Address, It does not need to set.");
}

TEST(ChangeAddress, SevenCharactersOfTheEchoAreASuccess)
{
    const auto change = addressChange(5, 12);
    EXPECT_TRUE(confirms(change, ":05020CFF\r\n"));
    EXPECT_TRUE(confirms(change, ":05020C"));
    EXPECT_TRUE(confirms(change, ":05020CFF\r\n:05020CFF\r\n"));
}

TEST(ChangeAddress, AnythingElseIsAFailure)
{
    const auto change = addressChange(5, 12);
    EXPECT_FALSE(confirms(change, ""));
    EXPECT_FALSE(confirms(change, ":05020"));
    EXPECT_FALSE(confirms(change, ":05020DFF\r\n"));
    EXPECT_FALSE(confirms(change, "~:05020CFF\r\n"));
}

} // namespace
} // namespace quorvel::protocol
