#include "sim/control.h"

#include "tests/sim/test_bus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ControlChannel : public testing::Test {
protected:
    std::string say(std::string_view line) { return control.handle(line, test.now); }

    TestBus test;
    std::string port = "/dev/pts/3";
    Control control{test.bus,
                    {[this] { return port; }, [this] { port.clear(); },
                     [this] {
                         port = "/dev/pts/4";
                         return std::string{};
                     }}};
};

constexpr const char* kOk = R"({"ok":true})";

TEST_F(ControlChannel, TellsTheStateOfAReadout)
{
    test.talk(":0571+1.50000FF", 1);
    const auto state = say("state 5");
    for (const char* part :
         {R"("address":5,"type":"A")", R"("offsets":{"X":"+1.50000","Y":"+0.00000","Z":"+0.00000"})",
          R"("reference":false)", R"("wire":{"diameter":1.5,"error":0.3,"selfCalibration":true})",
          R"("clock":"2024-05-17T09:05:31")", R"("auto":{"mode":1,"values":[1,0,0,0]})",
          R"("ring":{"capacity":1000,"first":0,"next":200,"stored":200)", R"("stitching":"3665")",
          R"("calibration":{"X":[],"Y":[],"Z1":[],"Z2":[]})", R"("Z1":null)"})
        EXPECT_THAT(state, HasSubstr(part));
    EXPECT_THAT(state, Not(HasSubstr("\n")));
}

TEST_F(ControlChannel, TellsFramesOnce)
{
    test.talk(":0572FF");
    EXPECT_EQ(
        say("frames"),
        R"({"frames":[{"text":":0572FF\r\n","first":0.000000,"last":0.000000,"answered":17,"fault":""}],"dropped":0})");
    EXPECT_EQ(say("frames"), R"({"frames":[],"dropped":0})");
}

TEST_F(ControlChannel, ListsReadouts)
{
    EXPECT_THAT(say("readouts"),
                StartsWith(R"({"readouts":[{"address":5,"type":"A"},{"address":12,"type":"B"})"));
}

TEST_F(ControlChannel, SetsAndClearsFaults)
{
    EXPECT_EQ(say("fault silent@72"), kOk);
    EXPECT_EQ(test.talk(":0572FF"), "");
    EXPECT_EQ(say("faults clear"), kOk);
    EXPECT_EQ(test.talk(":0572FF"), ":0572+0.00000FF\r\n");
}

TEST_F(ControlChannel, UnplugsAndPlugsTheDevice)
{
    EXPECT_EQ(say("device"), R"({"device":"/dev/pts/3"})");
    EXPECT_EQ(say("unplug"), kOk);
    EXPECT_EQ(say("device"), R"({"device":null})");
    EXPECT_EQ(say("plug"), R"({"device":"/dev/pts/4"})");
}

TEST_F(ControlChannel, ReplacesAnAnswer)
{
    EXPECT_EQ(say("reply 5 22 :0522000000050010FF"), kOk);
    EXPECT_EQ(test.talk(":0522FF"), ":0522000000050010FF\r\n");
    EXPECT_EQ(say("reply 5 22"), kOk);
    EXPECT_EQ(test.talk(":0522FF"), ":0522100000000200FF\r\n");
}

TEST_F(ControlChannel, TakesRecords)
{
    EXPECT_EQ(say("take 5 3"), kOk);
    EXPECT_EQ(say("take 5"), kOk);
    EXPECT_EQ(test.talk(":0522FF", 1), ":0522100000000204FF\r\n");
    EXPECT_EQ(test.talk(":05240203FF").substr(9, 12), "240517090530");
}

TEST_F(ControlChannel, ShowsTheStoredRecordsOldestFirst)
{
    say("set 5 x 12.5");
    say("set 5 y 30");
    say("set 5 ring 10,9,1");
    EXPECT_EQ(say("records 5"), R"({"records":[{"slot":9,"fields":["240517080000","+012.500","+030.000"]},)"
                                R"({"slot":0,"fields":["240517090000","+012.500","+030.000"]}]})");
    test.talk(":0525FF");
    EXPECT_EQ(say("records 5"), R"({"records":[]})");
}

TEST_F(ControlChannel, LeavesOnlyNoiseOfAStoredField)
{
    say("set 33 ring 10,0,3");
    const auto good = test.talk(":21240001FF");
    EXPECT_EQ(say("set 33 noisy 1,z1"), kOk);
    const auto bad = test.talk(":21240001FF");
    ASSERT_EQ(bad.size(), good.size());
    EXPECT_EQ(bad.substr(0, 37), good.substr(0, 37));
    EXPECT_NE(bad.substr(37, 8), good.substr(37, 8));
    EXPECT_EQ(bad.substr(45), good.substr(45));
    EXPECT_EQ(test.talk(":21240001FF"), bad);
    EXPECT_EQ(say("set 33 noisy 1"), kOk);
    const auto worst = test.talk(":21240001FF");
    for (const std::size_t field : {9U, 21U, 29U, 37U, 45U})
        EXPECT_NE(worst.substr(field, 8), good.substr(field, 8)) << field;
    EXPECT_EQ(worst.find_first_of(":\r\n", 1), 55U);
    EXPECT_EQ(test.talk(":21240002FF").substr(0, 9), ":21240002");
}

TEST_F(ControlChannel, PutsAClockOffWithItsStoredReadings)
{
    say("set 5 ring 10,0,3");
    EXPECT_EQ(say("set 5 clockoff -3600"), kOk);
    EXPECT_EQ(test.talk(":0504FF", 0), ":0504240517080530FF\r\n");
    EXPECT_EQ(test.talk(":05240002FF", 0).substr(9, 12), "240517080000");
    EXPECT_EQ(say("set 5 clockoff 86400"), kOk);
    EXPECT_EQ(test.talk(":0504FF", 0), ":0504240518080530FF\r\n");
    EXPECT_EQ(test.talk(":0522FF", 0), ":0522001000000003FF\r\n");
}

TEST_F(ControlChannel, TellsBitErrorsWithTheirSeedAndCounts)
{
    EXPECT_EQ(say("biterrors 1,7"), R"({"rate":1.000000000,"seed":7,"toReadouts":{"passed":0,"hit":0},)"
                                    R"("fromReadouts":{"passed":0,"hit":0}})");
    EXPECT_EQ(test.talk(":0572FF"), "");
    EXPECT_EQ(say("biterrors 0"), R"({"rate":0.000000000,"seed":7,"toReadouts":{"passed":0,"hit":0},)"
                                  R"("fromReadouts":{"passed":0,"hit":0}})");
    EXPECT_EQ(test.talk(":0572FF"), ":0572+0.00000FF\r\n");
    EXPECT_THAT(say("biterrors"),
                HasSubstr(R"("toReadouts":{"passed":9,"hit":0},"fromReadouts":{"passed":17,)"));
}

struct SetCase {
    const char* name;
    const char* line;
    const char* command;
    const char* answer;
};

void PrintTo(const SetCase& set, std::ostream* out) { *out << set.line; }

class SetByHand : public ControlChannel, public testing::WithParamInterface<SetCase> {};

TEST_P(SetByHand, ShowsInTheAnswers)
{
    EXPECT_EQ(say("set 33 x 12.5"), kOk);
    EXPECT_EQ(say("set 33 y 30"), kOk);
    EXPECT_EQ(say(GetParam().line), kOk);
    EXPECT_EQ(test.talk(GetParam().command), GetParam().answer);
}

constexpr SetCase kSets[] = {
    {"Place", "set 33 x 7.25", ":212101FF", ":212101+7.25000+30.000000FF\r\n"},
    {"Offset", "set 33 offsetx +1.00000", ":212101FF", ":212101+13.5000+30.000000FF\r\n"},
    {"OffsetOfAnyText", "set 33 offsetz nonsense", ":217806FF", ":217806nonsenseFF\r\n"},
    {"Swap", "set 33 swap on", ":217702FF", ":21770201FF\r\n"},
    {"Invert", "set 33 invertz on", ":217708FF", ":21770801FF\r\n"},
    {"Reference", "set 33 reference on", ":2176FF", ":217601FF\r\n"},
    {"SelfCalibration", "set 33 selfcalibration off", ":2168FF", ":21681503000000FF\r\n"},
    {"Diameter", "set 33 diameter 20", ":2168FF", ":21682003010000FF\r\n"},
    {"Error", "set 33 error 5", ":2168FF", ":21681505010000FF\r\n"},
    {"Clock", "set 33 clock 2099-12-31T23:59:59", ":2104FF", ":2104991231235959FF\r\n"},
    {"Interval", "set 33 interval 0 5", ":2106FF", ":21060100050000FF\r\n"},
    {"FixedTimes", "set 33 fixed 8 12 16 20", ":2106FF", ":21060208121620FF\r\n"},
    {"Ring", "set 33 ring 1000,998,2", ":2122FF", ":2122100009980002FF\r\n"},
    {"Stitching", "set 33 stitching 0512", ":217822FF", ":2178220512FF\r\n"},
    {"ReadingLength", "set 33 readinglength 27", ":212101FF", ":212101+12.5000+30.0000FF\r\n"},
};

INSTANTIATE_TEST_SUITE_P(Keys, SetByHand, testing::ValuesIn(kSets), caseName);

TEST_F(ControlChannel, LetsTheWireGoAgain)
{
    say("set 5 x 12.5");
    say("set 5 x free");
    EXPECT_NE(test.talk(":052101FF").substr(7, 8), "+12.5000");
}

TEST_F(ControlChannel, RefusesInOneLineWhatItCannotDo)
{
    for (const char* bad : {"bogus",
                            "state",
                            "state 6",
                            "state x",
                            "set 5",
                            "set 5 bogus 1",
                            "set 5 x",
                            "set 5 x 1y",
                            "set 5 x nan",
                            "set 5 x inf",
                            "set 5 x -inf",
                            "set 6 x 1",
                            "set 5 swap maybe",
                            "set 5 offsetx +1.5",
                            "set 5 clock now",
                            "set 5 fixed 8 12 16",
                            "set 5 interval 0 x",
                            "set 5 ring 10,10,0",
                            "set 5 ring 0,0,0",
                            "set 5 ring 10",
                            "set 5 stitching 123",
                            "set 5 readinglength 28",
                            "set 5 diameter 100",
                            "set 5 clockoff",
                            "set 5 clockoff --5",
                            "set 5 clockoff 400000000",
                            "set 5 noisy",
                            "set 5 noisy 200",
                            "set 5 noisy 0,",
                            "set 5 noisy 0,w",
                            "records",
                            "records 6",
                            "biterrors x",
                            "biterrors 2",
                            "take 5 0",
                            "take 6",
                            "take 5 x",
                            "reply 5 99 x",
                            "reply 6 22 x",
                            "fault",
                            "fault x",
                            "faults",
                            "\"",
                            "\x01"}) {
        const auto answer = say(bad);
        EXPECT_THAT(answer, StartsWith(R"({"error":")")) << bad;
        EXPECT_THAT(answer, Not(HasSubstr("\n"))) << bad;
    }
}

} // namespace
} // namespace quorvelsim
