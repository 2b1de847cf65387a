#include "autoread/visit.h"

#include "autoread/file_name.h"
#include "autoread/visit_fixture.h"

#include <QJsonArray>

#include <fstream>

namespace quorvel::autoread {

namespace {

using test::VisitTo;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class VisitFor : public VisitTo {
protected:
    static Finding::Kind kindOf(const Report& report, std::size_t index)
    {
        return report.findings.at(index).kind;
    }
};

TEST_F(VisitFor, RingIsShownWithItsEndsAndItsClock)
{
    readout.take(8);
    const auto ring = visit().askRing();
    ASSERT_TRUE(ring) << ring.error();
    EXPECT_EQ(text(*ring, 1), "Readout 1, type A, B or D: 8 records, room for 20\n"
                              "First: 2024-01-01 00:00:00  x 1  y -1.5\n"
                              "Last:  2024-01-01 07:00:00  x 8  y -1.5\n"
                              "Current Interval is 1 hours 0 minutes 0 seconds\n"
                              "Clock: " +
                                  ring->clock->readout.toString("yyyy-MM-dd HH:mm:ss").toStdString() +
                                  ", 1 min 0 s behind the PC\n");
    const auto object = json(*ring, 1);
    EXPECT_EQ(object.value("records").toInt(), 8);
    EXPECT_EQ(object.value("last").toObject().value("xMm").toDouble(), 8);
    EXPECT_EQ(object.value("clock").toObject().value("aheadSeconds").toInt(), -60);
    EXPECT_EQ(object.value("intervalSeconds").toInt(), 3600);
    readout.clear();
    EXPECT_THAT(text(*visit().askRing(), 1),
                StartsWith("Readout 1, type A, B or D: 0 records, room for 20\nCurrent"));
    readout.spoil = [](const std::string&, const std::string&) { return std::string(); };
    EXPECT_EQ(visit().askRing().error(), "Comm Error The readout did not answer.");
}

TEST_F(VisitFor, ReportHoldsWhatWasAskedAndGot)
{
    readout.take(8);
    const auto report = download("a.csv");
    EXPECT_EQ(report.expected, 8);
    EXPECT_EQ(report.received, 8);
    EXPECT_EQ(report.firstTime->iso(), "2024-01-01T00:00:00");
    EXPECT_EQ(report.lastTime->iso(), "2024-01-01T07:00:00");
    EXPECT_EQ(report.interval, 3600);
    EXPECT_EQ(report.clock->ahead(), -60);
    EXPECT_TRUE(report.findings.empty());
    EXPECT_EQ(summary(report), "8 of 8 records of readout 1 are in " + file("a.csv").string() + ".");
    EXPECT_THAT(text(report), StartsWith("Readout: 1, type A\nFile: " + file("a.csv").string() +
                                         "\nRecords: 8 of 8, complete\nFirst: 2024-01-01T00:00:00\n"));
    const auto object = json(report);
    EXPECT_EQ(object.value("received").toInt(), 8);
    EXPECT_TRUE(object.value("complete").toBool());
    EXPECT_TRUE(object.value("safeToDelete").isNull());
    EXPECT_EQ(object.value("line").toObject().value("questions").toInt(), 8);
    ASSERT_NE(book.report(1), nullptr);
    visit().check({file("a.csv")});
    EXPECT_EQ(book.report(1)->safeToDelete, true);
}

TEST_F(VisitFor, GapsDoublesAndStepsBackHaveTheirPlace)
{
    readout.take(3);
    readout.now = readout.now.addSecs(3LL * 3600);
    readout.take(2);
    readout.now = readout.now.addSecs(-3600);
    readout.take(2);
    readout.now = readout.now.addSecs(-5LL * 3600);
    readout.take(2);
    const auto report = download("a.csv");
    ASSERT_EQ(report.findings.size(), 3U);
    EXPECT_EQ(text(report.findings[0]),
              "Row 4, record 0003: 4 h 0 min after the record before, instead of 1 h 0 min");
    EXPECT_EQ(text(report.findings[1]), "Row 6, record 0005: the same time as the record before");
    EXPECT_EQ(text(report.findings[2]), "Row 8, record 0007: 4 h 0 min before the record before it");
    const auto object = json(report);
    EXPECT_EQ(object.value("gaps").toInt(), 1);
    EXPECT_EQ(object.value("doubles").toInt(), 1);
    EXPECT_EQ(object.value("backward").toInt(), 1);
    EXPECT_EQ(object.value("findings").toArray().at(0).toObject().value("index").toInt(), 3);
}

TEST_F(VisitFor, EarlierIntervalIsNoGap)
{
    readout.take(4);
    readout.interval = 60;
    readout.take(4);
    EXPECT_TRUE(download("a.csv").findings.empty());
}

TEST_F(VisitFor, GapBetweenTwoVisitsIsReported)
{
    readout.take(3);
    download("a.csv");
    readout.now = readout.now.addSecs(5LL * 3600);
    readout.take(2);
    const auto report = goOn("a.csv");
    ASSERT_EQ(report.findings.size(), 1U);
    EXPECT_EQ(text(report.findings[0]),
              "Row 4, record 0003: 6 h 0 min after the record before, instead of 1 h 0 min");
}

TEST_F(VisitFor, UnreadableFieldIsReportedWithItsCharacters)
{
    readout.take(5);
    readout.spoil = [](const std::string& frame, std::string reply) {
        return frame == ":01240002FF" ? reply.replace(29, 8, "XYZABCDE") : reply;
    };
    const auto report = download("a.csv", {}, {.retries = 3});
    EXPECT_TRUE(report.complete());
    ASSERT_EQ(report.findings.size(), 1U);
    EXPECT_EQ(kindOf(report, 0), Finding::Kind::Unreadable);
    EXPECT_EQ(text(report.findings[0]), "Row 3, record 0002: no number for y: \"XYZABCDE\"");
    EXPECT_EQ(json(report).value("unreadable").toInt(), 1);
    EXPECT_THAT(content("a.csv"), HasSubstr("2024-01-01T02:00:00,3,\n"));
}

TEST_F(VisitFor, TypeIsToldByTheReadoutWhateverIsSelected)
{
    test::RingReadout three(20, true);
    three.take(3);
    Visit visit(three.line.module1, 1, link::TypeA, book, {});
    const auto report = visit.download(file("a.csv"), Existing::Keep, {});
    EXPECT_EQ(report.type, "C");
    EXPECT_EQ(content("a.csv"), three.table(false));
    three.clear();
    Visit empty(three.line.module1, 1, link::TypeA, book, {});
    EXPECT_TRUE(empty.askRing()->threeDirection);
    readout.take(2);
    Visit two(readout.line.module1, 1, link::TypeC, book, {});
    EXPECT_EQ(two.download(file("b.csv"), Existing::Keep, {}).type, "two-direction");
    EXPECT_EQ(content("b.csv"), readout.table(false));
}

TEST_F(VisitFor, NothingIsMadeWithoutRecordsOrWithoutAPlace)
{
    EXPECT_EQ(download("a.csv").reason, protocol::kNoData);
    readout.take(3);
    EXPECT_THAT(download("missing/a.csv").reason, HasSubstr("missing/a.csv could not be written"));
    std::ofstream(file("old.csv")) << "old";
    EXPECT_THAT(download("old.csv").reason, HasSubstr("old.csv exists"));
    readout.spoil = [](const std::string& frame, std::string reply) {
        return frame.starts_with(":0124") ? std::string() : reply;
    };
    const auto silent = download("a.csv");
    EXPECT_EQ(silent.ending, Ending::CommError);
    EXPECT_EQ(silent.reason, "0 records have been received, Comm Error");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("old.csv"));
}

TEST_F(VisitFor, OldFileGoesOnlyWhenTheNewOneIsComplete)
{
    readout.take(5);
    std::ofstream(file("a.csv")) << "old";
    const auto broken = visit().download(file("a.csv"), Existing::Replace, stopAfter(2));
    EXPECT_EQ(broken.ending, Ending::Stopped);
    ASSERT_FALSE(broken.keptOld.empty());
    EXPECT_EQ(test::contents(broken.keptOld), "old");
    EXPECT_THAT(book.text(1),
                HasSubstr("The file that was there before is kept as " + broken.keptOld.string()));
    std::filesystem::remove(broken.keptOld);
    const auto whole = visit().download(file("a.csv"), Existing::Replace, {});
    EXPECT_TRUE(whole.complete() && whole.keptOld.empty());
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("a.csv"));
}

TEST_F(VisitFor, ReplyOfAnotherSlotStopsTheDownloadBeforeItIsStored)
{
    readout.take(5);
    readout.spoil = [](const std::string& frame, std::string reply) {
        return frame == ":01240003FF" ? reply.replace(5, 4, "0001") : reply;
    };
    const auto report = download("a.csv");
    EXPECT_EQ(report.ending, Ending::Misfit);
    EXPECT_EQ(report.received, 3);
    EXPECT_EQ(report.reason,
              "Record 0003 was asked for, but the reply is not its answer: it is of slot 0001. The "
              "download has stopped; the 3 records before it are in the file, which can be continued.");
}

TEST(FileName, SaysReadoutTypeAndDay)
{
    EXPECT_EQ(proposedName(5, "A", QDate(2024, 5, 17)), "readout-5-A-2024-05-17.mdb");
    EXPECT_EQ(addressInName("/x/readout-249-C-2024-05-17.mdb"), 249);
    for (const char* name : {"a.mdb", "readout-", "readout-5", "readout-250-A.mdb", "readout-x-A.mdb",
                             "readout--5.mdb", "readout-99999999999-A.mdb"}) {
        EXPECT_EQ(addressInName(name).value_or(-1), std::string(name) == "readout-5" ? 5 : -1) << name;
    }
}

} // namespace

} // namespace quorvel::autoread
