#include "sim/faults.h"

#include "sim/text.h"
#include "tests/sim/test_bus.h"

#include <bit>
#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

struct FaultCase {
    const char* name;
    const char* fault;
    const char* command;
    const char* answer;
};

void PrintTo(const FaultCase& fault, std::ostream* out) { *out << fault.fault; }

class Spoiled : public testing::TestWithParam<FaultCase> {};

TEST_P(Spoiled, AnswersLookLikeThis)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add(GetParam().fault), "");
    auto& readout = *test.bus.find(33);
    readout.fillRing(10, 0, 0, 0);
    readout.ring.put(4, {fromIsoTime("2024-05-17T04:00:00").value_or(0), {}});
    EXPECT_EQ(test.talk(GetParam().command), GetParam().answer);
}

constexpr FaultCase kCases[] = {
    {"Silent", "silent@72", ":2172FF", ""},
    {"Short", "short@72", ":2172FF", ":2172+0.00000FF\r"},
    {"ShortByNumber", "short=3@72", ":2172FF", ":21"},
    {"ShortOfNothing", "short=99@72", ":2172FF", ":2172+0.00000FF\r\n"},
    {"Long", "long@72", ":2172FF", ":2172+0.00000FF\r\n0"},
    {"LongByNumber", "long=3@72", ":2172FF", ":2172+0.00000FF\r\n000"},
    {"EchoOfAValue", "echo@71", ":2171+1.50000FF", ":2171+2.50000FF\r\n"},
    {"EchoOfAFlag", "echo@75", ":217500FF", ":217501FF\r\n"},
    {"EchoOfASwitch", "echo@7703", ":21770301FF", ":21770302FF\r\n"},
    {"EchoOfAClock", "echo@03", ":2103240517090530FF", ":2103240517190530FF\r\n"},
    {"EchoOfAnAddress", "echo@02", ":210207FF", ":210208FF\r\n"},
    {"EchoOfADeletion", "echo@25", ":2125FF", ":2126FF\r\n"},
    {"EchoOfAQuery", "echo@72", ":2172FF", ":2173+0.00000FF\r\n"},
    {"EchoAtAPosition", "echo=11@7805", ":217805+1.50000FF", ":217805+1.60000FF\r\n"},
    {"EchoOfASearch", "echo@33/01", ":2101FF", ":22\r\n"},
    {"BadDate", "baddate@24", ":21240000FF", ":21240000241332000000+000.000+000.000+000.000+000.000FF\r\n"},
    {"BadNumber", "badnumber@24", ":21240000FF",
     ":21240000000000000000XYZABCDE+000.000+000.000+000.000FF\r\n"},
    {"BadMode", "badnumber@06", ":2106FF", ":2106XY01000000FF\r\n"},
    {"BadPointers", "badnumber@22", ":2122FF", ":2122XYZA00000000FF\r\n"},
    {"NoLineFeed", "nolf@72", ":2172FF", ":2172+0.00000FF\r"},
    {"Twice", "twice@25", ":2125FF", ":2125FF\r\n:2125FF\r\n"},
    {"Noise", "noise@25", ":2125FF", "~~~:2125FF\r\n"},
    {"OtherSlot", "slot@24", ":21240003FF", ":21240004240517040000+000.000+000.000+000.000+000.000FF\r\n"},
    {"OtherSlotBehindTheLast", "slot@24", ":21240009FF",
     ":21240000000000000000+000.000+000.000+000.000+000.000FF\r\n"},
    {"OtherSlotByNumber", "slot=7@24", ":21240003FF",
     ":21240007000000000000+000.000+000.000+000.000+000.000FF\r\n"},
    {"OtherSlotThatIsNone", "slot=10@24", ":21240003FF", ""},
    {"OtherSlotOfNoRecord", "slot@72", ":2172FF", ":2172+0.00000FF\r\n"},
    {"HangUpHalfway", "hangup@25", ":2125FF", ":212"},
    {"HangUpAtOnce", "hangup=0@25", ":2125FF", ""},
    {"AllCommands", "silent@*", ":2125FF", ""},
    {"AFamilyOfCommands", "silent@77", ":21770301FF", ""},
    {"OfAnotherReadout", "silent@5/25", ":2125FF", ":2125FF\r\n"},
    {"OfThisReadout", "silent@33/25", ":2125FF", ""},
    {"OfAnotherCommand", "silent@22", ":2125FF", ":2125FF\r\n"},
};

INSTANTIATE_TEST_SUITE_P(Faults, Spoiled, testing::ValuesIn(kCases), caseName);

TEST(Faults, LateAnswersComeLate)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("late@72:1"), "");
    EXPECT_EQ(test.talk(":0572FF", 2.9), "");
    EXPECT_EQ(test.talk(":0574FF", 0.05), ":0574+0.00000FF\r\n");
    EXPECT_EQ(test.bus.due(3.1), ":0572+0.00000FF\r\n");
}

TEST(Faults, GarbledAnswersKeepLengthAddressAndLineEnd)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("garbled@2101"), "");
    for (int i = 0; i < 20; ++i) {
        const auto answer = test.talk(":052101FF");
        ASSERT_EQ(answer.size(), 29U);
        EXPECT_EQ(answer.substr(0, 3), ":05");
        EXPECT_EQ(answer.substr(27), "\r\n");
        EXPECT_NE(answer.substr(3, 4), "2101");
        EXPECT_EQ(answer.find_first_of(":\r\n", 1), 27U);
    }
}

TEST(Faults, WrongBitsAreOneInEachOfSoManyCharacters)
{
    TestBus test;
    test.bus.find(5)->pinned = {12.5, 30};
    for (const std::size_t count : {1U, 3U, 29U}) {
        test.bus.faults().clear();
        ASSERT_EQ(test.bus.faults().add("bit=" + std::to_string(count) + "@2101"), "");
        const std::string right = ":052101+12.5000+30.000000FF\r\n";
        const auto answer = test.talk(":052101FF");
        ASSERT_EQ(answer.size(), right.size());
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < right.size(); ++i) {
            const auto bits = static_cast<unsigned char>(answer[i] ^ right[i]);
            ASSERT_LE(std::popcount(bits), 1);
            wrong += bits != 0 ? 1 : 0;
        }
        EXPECT_EQ(wrong, count);
    }
}

TEST(Faults, AReadingTakenMeanwhileLeavesTheAnswerAlone)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("take=2@24:2+1"), "");
    const auto first = test.talk(":05240000FF");
    EXPECT_EQ(test.talk(":0522FF"), ":0522100000000200FF\r\n");
    EXPECT_EQ(test.talk(":05240000FF"), first);
    EXPECT_EQ(test.talk(":05240000FF"), first);
    EXPECT_EQ(test.talk(":05240000FF"), first);
    EXPECT_EQ(test.talk(":0522FF"), ":0522100000000204FF\r\n");
}

TEST(Faults, AWrongCountLeavesThePixelsAlone)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("count@65:1"), "");
    ASSERT_EQ(test.bus.faults().add("count=20001@7803"), "");
    const auto answer = test.talk(":0565FF");
    EXPECT_EQ(answer.substr(0, 9), ":05651D1B"); // 7451
    EXPECT_EQ(answer.size(), 2U * 7450 + 13);
    EXPECT_EQ(test.talk(":217803FF").substr(0, 11), ":2178034E21");
}

TEST(Faults, CountAndSkipHitTheNthAnswer)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("silent@24:2+3"), "");
    std::string heard;
    for (int i = 0; i < 8; ++i)
        heard += test.talk(":05240000FF").empty() ? '-' : 'x';
    EXPECT_EQ(heard, "xxx--xxx");
}

TEST(Faults, SkipWithoutCountLastsForEver)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("silent@24:+2"), "");
    std::string heard;
    for (int i = 0; i < 6; ++i)
        heard += test.talk(":05240000FF").empty() ? '-' : 'x';
    EXPECT_EQ(heard, "xx----");
}

TEST(Faults, AreNamedInTheLogAndCanBeCleared)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("short@72"), "");
    test.talk(":0572FF");
    EXPECT_EQ(test.bus.takeFrames().at(0).fault, "short");
    test.bus.faults().clear();
    EXPECT_EQ(test.talk(":0572FF"), ":0572+0.00000FF\r\n");
}

TEST(Faults, ASilentReadoutIsNotFound)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("silent@12/01"), "");
    EXPECT_EQ(test.talk(":FF01FF"), ":05\r\n:21\r\n:64\r\n");
}

TEST(Faults, HangUpIsToldOnce)
{
    TestBus test;
    ASSERT_EQ(test.bus.faults().add("hangup@72"), "");
    test.talk(":0572FF");
    EXPECT_TRUE(test.bus.takeHangUp());
    EXPECT_FALSE(test.bus.takeHangUp());
}

TEST(Faults, RefuseWhatTheyDoNotUnderstand)
{
    for (const char* bad : {"", "silent", "silent@", "silent@99", "silent@250/2101", "silent@x/2101",
                            "silent@2101:", "silent@2101:x", "silent@2101:1+", "silent@2101:1+x", "loud@2101",
                            "short=@2101", "short=x@2101", "short=-1@2101", "short=1e9@2101", "@2101"})
        EXPECT_NE(Faults().add(bad), "") << bad;
}

} // namespace
} // namespace quorvelsim
