#include "autoread/continuing.h"

#include "autoread/visit_fixture.h"

#include <fstream>

namespace quorvel::autoread {

namespace {

using test::VisitTo;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class Continuing : public VisitTo {
protected:
    Follow planned(const char* name)
    {
        auto again = visit();
        const auto plan = again.plan(file(name));
        EXPECT_TRUE(plan) << (plan ? std::string() : plan.error());
        if (plan) lastPlan = *plan;
        return lastPlan.follow;
    }
    void put(const char* name, const std::string& text) const { std::ofstream(file(name)) << text; }
};

/// A ring, by the readings taken, and a kind of file.
struct Ring {
    const char* name;
    int taken;
    const char* file;
};

class BrokenAnywhere : public Continuing, public ::testing::WithParamInterface<Ring> {};

TEST_P(BrokenAnywhere, GivesTheFileOfADownloadThatRanThrough)
{
    readout.take(GetParam().taken);
    const auto* name = GetParam().file;
    const auto whole = download(name);
    ASSERT_TRUE(whole.complete());
    const auto through = content(name);
    EXPECT_EQ(through, readout.table(true));
    for (int stop = 0; stop <= whole.expected; ++stop) {
        std::filesystem::remove(file(name));
        const auto broken = download(name, stopAfter(stop));
        EXPECT_EQ(broken.received, stop);
        const auto rest = goOn(name);
        EXPECT_EQ(rest.received, whole.expected - stop) << lastPlan.words;
        EXPECT_FALSE(lastPlan.needsConsent()) << lastPlan.words;
        EXPECT_EQ(content(name), through) << "stopped after " << stop;
    }
}

INSTANTIATE_TEST_SUITE_P(Autoread, BrokenAnywhere,
                         ::testing::Values(Ring{"Csv", 7, "a.csv"}, Ring{"Mdb", 7, "a.mdb"},
                                           Ring{"FullRing", 19, "a.csv"}, Ring{"Wrapped", 27, "a.csv"},
                                           Ring{"WrappedMdb", 33, "a.mdb"}),
                         [](const auto& ring) { return std::string(ring.param.name); });

TEST_F(Continuing, RingThatHasWrappedPartlyGoesOnThroughAllItsSlots)
{
    readout.take(30);
    readout.first = 15; // 15 .. 9, and what an earlier round left in 10 .. 14
    ASSERT_EQ(download("through.csv").received, 20);
    for (int stop = 1; stop < 20; ++stop) {
        std::filesystem::remove(file("a.csv"));
        download("a.csv", stopAfter(stop));
        goOn("a.csv");
        EXPECT_EQ(content("a.csv"), content("through.csv")) << "stopped after " << stop;
    }
}

TEST_F(Continuing, NextMonthOnlyWhatIsNewIsFetched)
{
    for (const char* name : {"a.csv", "a.mdb"}) {
        readout.clear();
        readout.take(8);
        download(name);
        const auto before = content(name);
        readout.take(5);
        readout.line.frames.clear();
        const auto report = goOn(name);
        EXPECT_EQ(report.received, 5);
        EXPECT_EQ(report.rowsBefore, 8);
        EXPECT_THAT(lastPlan.words, StartsWith("5 new records since 2024-01-"));
        EXPECT_EQ(content(name), readout.table(false));
        EXPECT_THAT(content(name), StartsWith(before));
        EXPECT_LE(readout.line.frames.size(), 5U + 12 + 6)
            << "a dozen questions at most, and those for the ring";
    }
}

TEST_F(Continuing, NextMonthOnARingThatWentOnRound)
{
    readout.take(25);
    download("a.csv");
    readout.take(6);
    EXPECT_EQ(goOn("a.csv").received, 6);
    EXPECT_FALSE(lastPlan.needsConsent()) << lastPlan.words;
    EXPECT_THAT(content("a.csv"),
                EndsWith(readout.table(false).substr(readout.table(false).size() - std::size_t{6} * 28)));
    EXPECT_EQ(goOn("a.csv").received, 0);
    EXPECT_EQ(lastPlan.follow, Follow::UpToDate);
    EXPECT_THAT(lastPlan.words, StartsWith("Nothing is new since "));
}

TEST_F(Continuing, GapIsToldWithItsLengthAndNeedsAConsent)
{
    readout.take(8);
    download("a.csv");
    readout.take(40);
    EXPECT_EQ(planned("a.csv"), Follow::Gap);
    EXPECT_TRUE(lastPlan.needsConsent());
    EXPECT_EQ(lastPlan.gapSeconds, 22 * 3600);
    EXPECT_EQ(
        lastPlan.words,
        "The readout no longer holds the last record of the file, of 2024-01-01 07:00:00. Its oldest is of "
        "2024-01-02 05:00:00: 22 h 0 min lie between them. 20 records would follow.");
    EXPECT_EQ(goOn("a.csv").received, 20);
}

TEST_F(Continuing, RingThatWasClearedJustThenHasNoGapLongerThanTheInterval)
{
    readout.take(8);
    download("a.csv");
    readout.clear();
    readout.take(3);
    EXPECT_EQ(planned("a.csv"), Follow::Gap);
    EXPECT_THAT(lastPlan.words,
                HasSubstr("1 h 0 min lie between them, not more than the interval. 3 records"));
}

TEST_F(Continuing, FileOfAnotherReadoutIsRecognisedByItsValues)
{
    readout.take(8);
    download("a.csv");
    readout.becomeAnother();
    readout.take(10);
    EXPECT_EQ(planned("a.csv"), Follow::Elsewhere);
    EXPECT_TRUE(lastPlan.needsConsent());
    EXPECT_THAT(lastPlan.words,
                HasSubstr("the file is of another readout, or the clock was set. 2 later records"));
    EXPECT_EQ(goOn("a.csv").received, 2);
}

TEST_F(Continuing, ReadoutWithoutLaterRecordsCannotContinueTheFile)
{
    readout.take(8);
    download("a.csv");
    readout.clear();
    readout.now = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
    readout.take(5);
    EXPECT_EQ(planned("a.csv"), Follow::NothingLater);
    EXPECT_FALSE(lastPlan.isPossible());
    const auto before = content("a.csv");
    EXPECT_EQ(goOn("a.csv").ending, Ending::NotBegun);
    EXPECT_EQ(content("a.csv"), before);
}

TEST_F(Continuing, FileOfAnotherTypeNeedsAConsent)
{
    put("a.csv", "time,x,y,z1,z2\n2023-12-31T23:00:00,1,2,3,4\n");
    readout.take(3);
    planned("a.csv");
    EXPECT_TRUE(lastPlan.otherType && lastPlan.needsConsent());
    EXPECT_THAT(lastPlan.words,
                EndsWith("The file is of type C, but the readout has no Z: these columns would stay "
                         "empty."));
    goOn("a.csv");
    EXPECT_THAT(content("a.csv"), EndsWith("2024-01-01T02:00:00,3,-1.5,,\n"));
}

TEST_F(Continuing, FileNamedAfterAnotherReadoutNeedsAConsent)
{
    readout.take(3);
    download("readout-12-A-2024-05-17.csv");
    EXPECT_EQ(planned("readout-12-A-2024-05-17.csv"), Follow::UpToDate);
    EXPECT_TRUE(lastPlan.otherName && lastPlan.needsConsent());
    EXPECT_THAT(lastPlan.words, EndsWith("By its name the file is of readout 12, not of readout 1."));
}

TEST_F(Continuing, ClockThatWasSetBackHidesNothing)
{
    readout.take(6);
    readout.now = readout.now.addSecs(-3LL * 3600);
    readout.take(3);
    download("a.csv");
    readout.take(4);
    EXPECT_EQ(goOn("a.csv").received, 4) << lastPlan.words;
    EXPECT_EQ(content("a.csv"), readout.table(false));
}

TEST_F(Continuing, LastRowWithEmptyFieldsIsFoundByTheRowsBeforeIt)
{
    readout.take(6);
    readout.spoil = [](const std::string& frame, std::string reply) {
        return frame == ":01240005FF" ? reply.replace(9, 12, "241332000000") : reply;
    };
    download("a.csv");
    EXPECT_THAT(content("a.csv"), EndsWith("\n,6,-1.5\n"));
    readout.take(3);
    EXPECT_EQ(goOn("a.csv").received, 3) << lastPlan.words;
    EXPECT_FALSE(lastPlan.needsConsent());
}

TEST_F(Continuing, UnreadableRecordsInTheRingDoNotStopTheSearch)
{
    readout.take(12);
    readout.spoil = [](const std::string& frame, std::string reply) {
        const bool bad = frame == ":01240006FF" || frame == ":01240007FF" || frame == ":01240009FF";
        return bad ? reply.replace(9, 12, "000000000000") : reply;
    };
    for (int stop = 1; stop <= 12; ++stop) {
        std::filesystem::remove(file("a.csv"));
        download("a.csv", stopAfter(stop));
        EXPECT_EQ(goOn("a.csv").received, 12 - stop) << stop << lastPlan.words;
        EXPECT_FALSE(lastPlan.needsConsent()) << stop;
    }
}

TEST_F(Continuing, HalfARowAtTheEndIsTakenOff)
{
    readout.take(5);
    download("a.csv", stopAfter(3));
    std::ofstream(file("a.csv"), std::ios::app) << "2024-01-01T03:00:00,4";
    goOn("a.csv");
    EXPECT_THAT(lastPlan.words, EndsWith("Half a row at the end of the file will be taken off."));
    EXPECT_EQ(content("a.csv"), readout.table(false));
}

TEST_F(Continuing, FileThatIsNoneOfOursIsRefused)
{
    readout.take(5);
    for (const auto* text :
         {"", "time,x\n", "a,b,c\n1,2,3\n", "time,x,y\n2024-01-01T00:00:00,1\n",
          "time,x,y\n2024-01-01 00:00:00,1,2\n", "time,x,y\n2024-01-01T00:00:00,1,two\n"}) {
        put("b.csv", text);
        auto again = visit();
        EXPECT_FALSE(again.plan(file("b.csv"))) << text;
        EXPECT_EQ(content("b.csv"), text);
    }
    put("b.mdb", "no database");
    EXPECT_FALSE(visit().plan(file("b.mdb")));
    EXPECT_FALSE(visit().plan(file("missing.mdb")));
}

TEST_F(Continuing, FileThatChangedSinceThePlanIsLeftAlone)
{
    readout.take(5);
    download("a.csv", stopAfter(3));
    auto again = visit();
    const auto plan = again.plan(file("a.csv"));
    ASSERT_TRUE(plan);
    put("a.csv", "time,x,y\n");
    const auto report = again.continueFile(*plan, {});
    EXPECT_EQ(report.ending, Ending::NotBegun);
    EXPECT_THAT(report.reason, HasSubstr("has changed meanwhile"));
    EXPECT_EQ(content("a.csv"), "time,x,y\n");
}

TEST_F(Continuing, EmptyRingHasNothingNew)
{
    readout.take(3);
    download("a.csv");
    readout.clear();
    EXPECT_EQ(goOn("a.csv").received, 0);
    EXPECT_EQ(lastPlan.words, "The readout holds no records: nothing is new.");
}

} // namespace

} // namespace quorvel::autoread
