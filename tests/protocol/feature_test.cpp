#include "protocol/feature.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

TEST(Feature, FramesAndTheirReplyLength)
{
    EXPECT_EQ(featureSet("01", true).frame, ":017501FF\r\n");
    EXPECT_EQ(featureSet("01", false).frame, ":017500FF\r\n");
    EXPECT_EQ(featureQuery("01").frame, ":0176FF\r\n");
    EXPECT_EQ(featureSet("01", true).reply.count, 11);
    EXPECT_EQ(featureQuery("01").reply.count, 11);
}

TEST(Feature, InputIsNotDrainedBefore)
{
    EXPECT_FALSE(featureSet("01", true).drains);
    EXPECT_FALSE(featureQuery("01").drains);
}

TEST(Feature, SevenCharactersOfTheEchoCount)
{
    const auto exchange = featureSet("01", true);
    EXPECT_TRUE(confirms(exchange, ":017501FF\r\n"));
    EXPECT_TRUE(confirms(exchange, ":017501~~~~"));
    EXPECT_TRUE(confirms(exchange, " :017501FF "));
    EXPECT_FALSE(confirms(exchange, ":017500FF\r\n"));
}

TEST(Feature, OnlyTwoZerosAreOff)
{
    EXPECT_FALSE(featureIsOn(":017600FF\r\n"));
    EXPECT_TRUE(featureIsOn(":017601FF\r\n"));
    EXPECT_TRUE(featureIsOn(":01760"));
    EXPECT_TRUE(featureIsOn(""));
}

TEST(Feature, StateIsZeroOneOrNothing)
{
    EXPECT_EQ(featureStateOf(":017600FF\r\n"), false);
    EXPECT_EQ(featureStateOf(":017601FF\r\n"), true);
    EXPECT_EQ(featureStateOf(":0176XYFF\r\n"), std::nullopt);
}

} // namespace
} // namespace quorvel::protocol
