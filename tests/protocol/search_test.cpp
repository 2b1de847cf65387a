#include "protocol/search.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

using Addresses = std::vector<std::string>;

TEST(Search, AsksEveryReadout) { EXPECT_EQ(search().frame, ":FF01FF\r\n"); }

TEST(Search, FindsTheReadoutsInTheOrderOfTheirAnswers)
{
    const auto found = foundAddresses(":0501FF\r\n:0C01FF\r\n");
    EXPECT_EQ(found, (Addresses{"05", "12"}));
    EXPECT_EQ(foundText(found), "05,12");
}

TEST(Search, SaysSoWhenNothingAnswers)
{
    EXPECT_TRUE(foundAddresses("").empty());
    EXPECT_EQ(foundText({}), "No Sensors(or MCU) Found");
}

TEST(Search, NoiseWithoutAnAddressFindsNothing)
{
    for (const auto* noise : {"\xff\xfe\x00", ":", "::::", "0501FF\r\n", ":zz01FF\r\n", ":FF01FF\r\n"}) {
        EXPECT_TRUE(foundAddresses(noise).empty()) << noise;
    }
}

TEST(Search, TriesZeroAnd250ButNotTheBroadcastAddress)
{
    EXPECT_EQ(foundAddresses(":0001FF\r\n"), (Addresses{"00"}));
    EXPECT_EQ(foundAddresses(":FA01FF\r\n"), (Addresses{"250"}));
    EXPECT_TRUE(foundAddresses(":FB01FF\r\n:FF01FF\r\n").empty());
}

TEST(Search, NoiseBetweenTwoAnswersIsSkipped)
{
    EXPECT_EQ(foundAddresses(":0501FF\r\n\x80\x81?:0C01FF\r\n"), (Addresses{"05", "12"}));
}

TEST(Search, AnAnswerGivesTheAddressAtTheHeadOfTheText)
{
    // Characters left over from an earlier exchange stand at the head here.
    EXPECT_EQ(foundAddresses("xx7:0501FF\r\n"), (Addresses{"07"}));
    // Answers out of order: 12 is at the head when 5 is looked for.
    EXPECT_EQ(foundAddresses(":0C01FF\r\n:0501FF\r\n"), (Addresses{"12"}));
}

TEST(Search, TheSameAddressTwiceIsFoundOnce)
{
    EXPECT_EQ(foundAddresses(":0501FF\r\n:0501FF\r\n"), (Addresses{"05"}));
}

TEST(Search, Finds249Readouts)
{
    std::string received;
    for (int address = 1; address <= 249; ++address) {
        char answer[16];
        std::snprintf(answer, sizeof answer, ":%02X01FF\r\n", static_cast<unsigned>(address));
        received += answer;
    }
    const auto found = foundAddresses(received);
    ASSERT_EQ(found.size(), 249U);
    EXPECT_EQ(found.front(), "01");
    EXPECT_EQ(found[98], "99");
    EXPECT_EQ(found[99], "100");
    EXPECT_EQ(found.back(), "249");
}

TEST(Search, LowerCaseIsReadAtTheHeadButNotLookedFor)
{
    EXPECT_EQ(foundAddresses(":0a01FF\r\n:0501FF\r\n"), (Addresses{"10"})) << "5 is found, 10 is at the head";
    EXPECT_EQ(foundAddresses(":0501FF\r\n:0a01FF\r\n"), (Addresses{"05"}));
    EXPECT_TRUE(foundAddresses(":0a01FF\r\n").empty());
}

} // namespace
} // namespace quorvel::protocol
