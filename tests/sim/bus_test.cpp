#include "sim/bus.h"

#include "sim/options.h"
#include "sim/text.h"
#include "tests/sim/test_bus.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

TEST(Bus, AnswersASearchInAscendingOrder)
{
    TestBus test;
    EXPECT_EQ(test.talk(":FF01FF"), ":05\r\n:0C\r\n:21\r\n:64\r\n");
}

TEST(Bus, AnswersASearchOfOneAddress)
{
    TestBus test;
    EXPECT_EQ(test.talk(":0C01FF"), ":0C\r\n");
}

TEST(Bus, IgnoresOtherBroadcasts)
{
    TestBus test;
    EXPECT_EQ(test.talk(":FF2101FF"), "");
    EXPECT_EQ(test.talk(":FF25FF"), "");
    EXPECT_EQ(test.bus.find(5)->ring.stored(), 200);
}

TEST(Bus, AllAddressesAnswerASearchWithinItsTimeAt9600Baud)
{
    std::map<int, const ReadoutType*> readouts;
    ASSERT_EQ(addReadouts("1-249:A", readouts), "");
    Bus bus(kPaced, 1);
    for (const auto& [address, type] : readouts)
        bus.add(Readout(address, *type, 1, 0));
    bus.receive(":FF01FF\r\n", 0);
    const auto sent = 9 * 10.0 / 9600;
    const auto answers = bus.due(sent + 1.6);
    for (const auto& [address, type] : readouts)
        EXPECT_NE(answers.find(":" + twoHex(address)), std::string::npos) << address;
    EXPECT_EQ(std::count(answers.begin(), answers.end(), ':'), 249);
    EXPECT_FALSE(bus.nextDue());
}

TEST(Bus, IsAsSlowAs9600Baud)
{
    TestBus test(kPaced);
    test.bus.receive(":0572FF\r\n", 0);
    constexpr double kCharacter = 10.0 / 9600;
    const double begin = 8 * kCharacter + kPaced.answer; // the first of the nine was whole at 0
    EXPECT_EQ(test.bus.due(begin + 0.9 * kCharacter), "");
    EXPECT_EQ(test.bus.due(begin + 1.1 * kCharacter), ":");
    EXPECT_EQ(test.bus.due(begin + 16.1 * kCharacter), "0572+0.00000FF\r");
    EXPECT_EQ(test.bus.due(begin + 17.1 * kCharacter), "\n");
}

TEST(Bus, LogsFramesWithTimesAndForgetsThemWhenTaken)
{
    TestBus test;
    test.now = 3;
    test.talk(":0572FF");
    test.talk(":0672FF");
    const auto frames = test.bus.takeFrames();
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].frame.text, ":0572FF\r\n");
    EXPECT_EQ(frames[0].frame.last, 3);
    EXPECT_EQ(frames[0].answerLength, 17U);
    EXPECT_EQ(frames[1].answerLength, 0U);
    EXPECT_TRUE(test.bus.takeFrames().empty());
}

TEST(Bus, ANewAddressTakesTheReadoutWithAllItsSettings)
{
    TestBus test;
    test.talk(":0571+1.50000FF");
    EXPECT_EQ(test.talk(":050207FF"), ":050207FF\r\n");
    EXPECT_EQ(test.talk(":0572FF"), "");
    EXPECT_EQ(test.talk(":0772FF"), ":0772+1.50000FF\r\n");
    EXPECT_EQ(test.talk(":FF01FF"), ":07\r\n:0C\r\n:21\r\n:64\r\n");
}

TEST(Bus, ASecondReadoutAtAnAddressSilencesTheFirst)
{
    TestBus test;
    test.talk(":05020CFF");
    EXPECT_EQ(test.talk(":FF01FF"), ":0C\r\n:21\r\n:64\r\n");
    EXPECT_EQ(test.bus.find(12)->type->letter, 'A');
}

TEST(Bus, SurvivesAnyCharacters)
{
    TestBus test;
    for (std::uint64_t round = 0; round < 2000; ++round) {
        std::string noise = round % 3 == 0 ? ":05" : "";
        for (std::uint64_t i = 0; i < 40; ++i)
            noise += static_cast<char>(static_cast<int>(256 * uniform(9, round, i)) - 128);
        test.bus.receive(noise, test.now);
    }
    test.bus.due(test.now);
    EXPECT_EQ(test.talk(":0572FF"), ":0572+0.00000FF\r\n");
}

} // namespace
} // namespace quorvelsim
