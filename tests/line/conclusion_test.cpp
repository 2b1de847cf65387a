#include "line/conclusion.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace quorvel::line {
namespace {

using protocol::CommandId;
using protocol::Shape;

Asked asked(CommandId command, std::vector<Shape> shapes, std::string reply = {})
{
    return {.command = command, .shapes = std::move(shapes), .reply = std::move(reply)};
}

/// Readout 5 and its line are well, 12 is there, too.
Findings well()
{
    Findings found;
    found.task.port = "COM1 by hand";
    found.task.address = 5;
    found.portOpen = true;
    found.searched = {5, 12};
    found.readout = {asked(CommandId::QueryFeature, {Shape::Good}),
                     asked(CommandId::ReadXY, {Shape::Good, Shape::Good, Shape::Good}),
                     asked(CommandId::QueryClock, {Shape::Good})};
    found.others = {{12, Shape::Good}};
    found.z = asked(CommandId::ReadZ, {Shape::Silent});
    return found;
}

void readingIs(Findings& found, Shape shape, const std::string& reply = ":0521")
{
    found.readout[1] = asked(CommandId::ReadXY, {shape, shape}, reply);
}

void silent(Findings& found)
{
    found.readout = {asked(CommandId::QueryFeature, {Shape::Silent, Shape::Silent}),
                     asked(CommandId::ReadXY, {Shape::Silent, Shape::Silent})};
    found.z.reset();
}

struct FaultRow {
    const char* name;
    Fault fault;
    std::function<void(Findings&)> spoil;
    const char* said; ///< part of the words
};

const FaultRow kRows[] = {
    {"None", Fault::None, [](Findings&) {}, "Readout 5 answers as it should."},
    {"LineGood", Fault::LineGood,
     [](Findings& found) {
         found.task.address.reset();
         found.readout.clear();
         found.z.reset();
     },
     "5 and 12 answered the search"},
    {"PortClosed", Fault::PortClosed, [](Findings& found) { found.portOpen = false; }, "No port is open."},
    {"PortNotOpened", Fault::PortClosed,
     [](Findings& found) {
         found.portOpen = false;
         found.task.whyClosed = "It is used by another program.";
     },
     "It is used by another program."},
    {"PortLost", Fault::PortLost, [](Findings& found) { found.lostReason = "It is gone."; }, "It is gone."},
    {"Stopped", Fault::Stopped, [](Findings& found) { found.stopped = true; }, "stopped"},
    {"Echo", Fault::Echo, [](Findings& found) { found.echoes = true; }, "sends back what it sends"},
    {"EchoOnly", Fault::EchoOnly,
     [](Findings& found) {
         found.echoes = true;
         found.searched.clear();
         silent(found);
     },
     "Only what is sent comes back"},
    {"Noise", Fault::Noise, [](Findings& found) { found.unasked = "~\x01"; }, "\"~\\x01\""},
    {"NotAnAddress", Fault::NotAnAddress,
     [](Findings& found) {
         found.task.address.reset();
         found.task.notAnAddress = "250";
     },
     "\"250\" names no readout"},
    {"NothingAnswers", Fault::NothingAnswers,
     [](Findings& found) {
         silent(found);
         found.searched.clear();
     },
     "No readout answers"},
    {"NothingButDamage", Fault::Damaged,
     [](Findings& found) {
         silent(found);
         found.searched.clear();
         found.beforeSearch = "\xFF";
     },
     "\"Search the bus\" arrives damaged"},
    {"ReadoutSilent", Fault::ReadoutSilent,
     [](Findings& found) {
         silent(found);
         found.searched = {12};
     },
     "Readout 5 does not answer. 12 answered"},
    {"SearchOnly", Fault::SearchOnly, silent, "answers the search, but nothing else"},
    {"CommandSilent", Fault::CommandSilent, [](Findings& found) { readingIs(found, Shape::Silent, {}); },
     "but not to \"Read X and Y\""},
    {"SearchSilent", Fault::SearchSilent, [](Findings& found) { found.searched = {12}; },
     "but not to the search"},
    {"SearchWrong", Fault::SearchWrong,
     [](Findings& found) {
         found.searched = {6, 13};
         found.others = {{6, Shape::Silent}, {13, Shape::Silent}};
     },
     "names 6 and 13, but no readout answers there"},
    {"Late", Fault::Late,
     [](Findings& found) {
         readingIs(found, Shape::Silent, {});
         found.readout[1].lateSeconds = 2.96;
     },
     "\"Read X and Y\" after 3.0 s"},
    {"SearchLate", Fault::Late, [](Findings& found) { found.searchLate = true; }, "the search too late"},
    {"NowAndThen", Fault::NowAndThen,
     [](Findings& found) {
         found.readout[1].shapes = {Shape::Silent, Shape::Good};
     },
     "(no answer)"},
    {"BreaksOff", Fault::BreaksOff,
     [](Findings& found) { readingIs(found, Shape::Short, std::string(28, '0')); },
     "28 of 29 characters came, the line feed is missing"},
    {"TooLong", Fault::TooLong, [](Findings& found) { readingIs(found, Shape::Long); }, "follows the answer"},
    {"Twice", Fault::Twice, [](Findings& found) { readingIs(found, Shape::Twice); }, "twice"},
    {"SearchTwice", Fault::Twice,
     [](Findings& found) {
         found.searched = {5, 5, 12};
     },
     "\"Search the bus\" twice"},
    {"NoiseBefore", Fault::NoiseBefore, [](Findings& found) { readingIs(found, Shape::NoiseBefore); },
     "stand before the answer"},
    {"NoiseBeforeSearch", Fault::NoiseBefore, [](Findings& found) { found.beforeSearch = "~"; }, "\"~\""},
    {"Damaged", Fault::Damaged, [](Findings& found) { readingIs(found, Shape::Garbled); }, "arrives damaged"},
    {"OtherCommand", Fault::OtherCommand, [](Findings& found) { readingIs(found, Shape::OtherCommand); },
     "the digits of another command"},
    {"OtherAddress", Fault::OtherAddress, [](Findings& found) { readingIs(found, Shape::OtherReadout); },
     "gives another address"},
    {"ShortReading", Fault::ShortReading, [](Findings& found) { readingIs(found, Shape::Brief); },
     "27 characters"},
    {"NoValue", Fault::NoValue, [](Findings& found) { readingIs(found, Shape::BadValue); },
     "no number, date or state"},
    {"AnotherReadout", Fault::AnotherReadout, [](Findings& found) { found.others[12] = Shape::Garbled; },
     "12, the answer is damaged"},
    {"AnotherReadoutTwice", Fault::AnotherReadout,
     [](Findings& found) {
         found.searched = {5, 12, 12};
     },
     "12 answered the search twice"},
    {"HasZ", Fault::HasZ,
     [](Findings& found) {
         found.task.type = link::TypeB;
         found.z = asked(CommandId::ReadZ, {Shape::Good});
     },
     "type B is chosen"},
    {"LacksZ", Fault::LacksZ, [](Findings& found) { found.task.type = link::TypeC; }, "Type C is chosen"},
    {"DamagedZ", Fault::Damaged,
     [](Findings& found) {
         found.task.type = link::TypeC;
         found.z = asked(CommandId::ReadZ, {Shape::Garbled}, "\x02");
     },
     "\"Read Z1 and Z2\" arrives damaged: \"\\x02\""},
};

class FaultOf : public ::testing::TestWithParam<FaultRow> {};

TEST_P(FaultOf, IsConcludedAndSaidWithTheNextStep)
{
    auto found = well();
    GetParam().spoil(found);
    const auto verdict = conclude(found);
    EXPECT_EQ(nameOf(verdict.fault), nameOf(GetParam().fault));
    EXPECT_TRUE(verdict.what.contains(QString::fromUtf8(GetParam().said))) << qPrintable(verdict.what);
    EXPECT_FALSE(verdict.next.isEmpty());
    for (const auto& words : {verdict.what, verdict.next, verdict.unknown}) {
        EXPECT_FALSE(words.contains('{')) << qPrintable(words);
    }
}

INSTANTIATE_TEST_SUITE_P(All, FaultOf, ::testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST(Conclusion, EveryFaultIsReached)
{
    std::set<Fault> reached;
    for (const auto& row : kRows) {
        reached.insert(row.fault);
    }
    EXPECT_EQ(reached.size(), static_cast<std::size_t>(Fault::LacksZ) + 1);
}

TEST(Conclusion, TheTypeThatWasNotChosenCannotBeWrong)
{
    auto found = well();
    found.z = asked(CommandId::ReadZ, {Shape::Good});
    EXPECT_EQ(conclude(found).fault, Fault::None);
    found.task.type = link::TypeC;
    EXPECT_EQ(conclude(found).fault, Fault::None);
}

TEST(Conclusion, OfSeveralFaultsTheDamageTellsMoreThanTheSilence)
{
    auto found = well();
    found.readout[0] = asked(CommandId::QueryFeature, {Shape::Silent, Shape::Silent});
    found.readout[2] = asked(CommandId::QueryClock, {Shape::Garbled, Shape::Garbled}, "~");
    EXPECT_EQ(conclude(found).fault, Fault::Damaged);
}

// What came from the line is shown, not read.
TEST(Conclusion, BracesFromTheLineStayAsTheyAre)
{
    auto found = well();
    readingIs(found, Shape::Garbled, "{readout}{detail}");
    EXPECT_TRUE(conclude(found).what.contains("\"{readout}{detail}\"")) << qPrintable(conclude(found).what);
}

} // namespace
} // namespace quorvel::line
