#include "calibration/calibration_files.h"
#include "calibration/downloadnote.h"
#include "calibration/recordjob.h"
#include "support/bench_on_the_bus.h"

#include <QDir>

#include <gmock/gmock.h>

namespace quorvel::calibration {
namespace {

using ::testing::HasSubstr;

/// A calibration of X at readout 5 of a simulated bus; readout 12 is there as well.
class Job : public test::BenchOnTheBus {
protected:
    std::filesystem::path at(const char* name) const { return folder.path().toStdString() + "/" + name; }
    QStringList names() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }
    void put(double place) { bus.command(QStringLiteral("set 5 x %1").arg(place)); }

    /// Moves the wire of a sensor that reads 2 mm for each of the dial, from 10 mm on.
    void takeAll(RunKind kind, int repeats = 1)
    {
        for (int i = 0; i < kPoints; ++i) {
            put(10 + 0.5 * i);
            const auto taken = job.take({kind, i, 0.25 * i, false, repeats, 5});
            ASSERT_TRUE(taken) << taken.error();
        }
    }

    RecordJob job{module1, folder.path().toStdString(), *directionOf("X")};
};

TEST_F(Job, LookingMakesNoFile)
{
    ASSERT_TRUE(job.load());
    EXPECT_TRUE(job.judge(RunKind::Measured).empty);
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(Job, GoesFromFoundToLeft)
{
    takeAll(RunKind::Found);
    takeAll(RunKind::Measured, 3);
    const auto measured = job.judge(RunKind::Measured);
    ASSERT_TRUE(measured.columns[0].fit);
    EXPECT_EQ(lineText(*measured.columns[0].fit), "Y=2.0000*X+(10.000)");
    EXPECT_EQ(measured.columns[0].points[4].takes, 3);
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[4], "4 1 12");
    bus.frames();

    const auto sent = job.download(5);
    ASSERT_TRUE(sent) << sent.error();
    EXPECT_TRUE(sent->agreed);
    EXPECT_EQ(sent->words,
              QStringList{"Readout 5 took the table of X_Data and repeated it, with a largest difference of "
                          "0.000 mm."});
    ASSERT_EQ(bus.frames().size(), 1);
    EXPECT_EQ(job.record().downloads.back().frame.size(), 185U);
    EXPECT_EQ(rowsOf(*keepDatedCopy(at("XDirection.mdb"))), rowsOf(at("XDirection.mdb")));

    takeAll(RunKind::Left);
    ASSERT_TRUE(job.change([](RecordData& record) { record.tolerance = 0.01; }));
    const auto left = job.judge(RunKind::Left);
    EXPECT_EQ(left.passes, true) << qPrintable(left.verdict) << " the readout corrects by its table";
    EXPECT_TRUE(left.hints.isEmpty()) << qPrintable(left.hints.join(' '));
    EXPECT_EQ(job.judge(RunKind::Found).passes, false);
    EXPECT_EQ(names().size(), 3) << qPrintable(names().join(' '))
                                 << " table, record and the copy of the table";
}

TEST_F(Job, SwitchingTheCorrectionOffSendsZerosByTheSameFrame)
{
    takeAll(RunKind::Measured);
    ASSERT_TRUE(job.download(5));
    put(12);
    EXPECT_NEAR(job.ask(5)->front(), 1, 0.001);
    bus.frames();
    const auto sent = job.switchOff(5);
    EXPECT_TRUE(sent.agreed);
    QString zeros = QStringLiteral(":056111");
    for (int i = 0; i < 2 * kPoints; ++i)
        zeros += QStringLiteral("+000.000");
    EXPECT_EQ(bus.frames(), QStringList{zeros + "FF"});
    EXPECT_NEAR(job.ask(5)->front(), 12, 0.001);
    EXPECT_EQ(corrects(job.record(), 5, "X_Data", {}), false);
}

TEST_F(Job, UpAndDownMakeOneMean)
{
    put(10);
    ASSERT_TRUE(job.take({RunKind::Measured, 0, 1, false, 1, 5}));
    put(10.5);
    ASSERT_TRUE(job.take({RunKind::Measured, 0, 1.25, true, 2, 5}));
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[0], "0 1.125 10.25");
    EXPECT_EQ(job.ownership().points.at(5), 1);
    put(11);
    ASSERT_TRUE(job.take({RunKind::Measured, 0, 1.25, true, 1, 5}));
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[0], "0 1.125 10.5") << "the way down anew";
}

TEST_F(Job, FilesFromElsewhereStartWithoutTheOldTakes)
{
    put(10);
    ASSERT_TRUE(job.take({RunKind::Measured, 0, 1, false, 1, 5}));
    std::filesystem::remove(at("XDirection.mdb"));
    makeFilledFile(folder.path().toStdString(), *directionOf("X"));
    ASSERT_TRUE(job.load());
    EXPECT_TRUE(job.ownership().points.empty());
    EXPECT_EQ(job.ownership().unknown, kPoints);
    put(20);
    ASSERT_TRUE(job.take({RunKind::Measured, 0, 2, true, 1, 5}));
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[0], "0 2 20") << "no mean with what was taken for the other file";
}

TEST_F(Job, PointsOfAnotherReadoutAreSaid)
{
    takeAll(RunKind::Measured);
    EXPECT_EQ(job.whyNotTheirs(5), "");
    EXPECT_EQ(job.whyNotTheirs(12),
              "The points were measured at readout 5, the address is 12: they are not this readout's.");
}

TEST_F(Job, FailedReadingLeavesThePointAsItWas)
{
    put(10);
    ASSERT_TRUE(job.take({RunKind::Found, 0, 1, false, 2, 5}));
    bus.fault("silent@2101:1+1");
    const auto taken = job.take({RunKind::Found, 0, 7, false, 2, 5});
    ASSERT_FALSE(taken);
    EXPECT_EQ(taken.error(), "Nothing was measured: the readout did not answer. Check the address.");
    EXPECT_EQ(job.judge(RunKind::Found).columns[0].points[0].dial, 1);
    EXPECT_FALSE(job.take({RunKind::Found, 0, 7, false, 2, 5}, [] { return true; }));
    EXPECT_FALSE(job.download(5)) << "points are missing";
}

TEST_F(Job, NewTableKeepsBothFilesUnderTheDay)
{
    takeAll(RunKind::Measured);
    ASSERT_TRUE(job.change([](RecordData& record) { record.person = QStringLiteral("Li"); }));
    const auto before = rowsOf(at("XDirection.mdb"));
    const auto kept = job.newTable();
    ASSERT_TRUE(kept) << kept.error();
    EXPECT_EQ(rowsOf(*kept), before);
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[10], "10 - -");
    EXPECT_TRUE(job.judge(RunKind::Measured).empty);
    EXPECT_EQ(job.record().person, "Li");
    EXPECT_TRUE(job.record().begun.isValid());
    EXPECT_EQ(names().size(), 4) << qPrintable(names().join(' '));
}

TEST_F(Job, ZTakesBothColumns)
{
    RecordJob z(module1, folder.path().toStdString(), *directionOf("Z"));
    bus.command("set 12 z1 10");
    bus.command("set 12 z2 11");
    const auto taken = z.take({RunKind::Measured, 3, 0.5, false, 1, 12});
    ASSERT_TRUE(taken) << taken.error();
    EXPECT_EQ(rowsOf(at("ZDirection.mdb"))[3], "3 0.5 10 11");
    const auto sent = z.switchOff(12);
    EXPECT_EQ(sent.words.size(), 2);
    EXPECT_TRUE(sent.agreed);
}

TEST_F(Job, EchoThatDiffersIsInTheRecordAndWhatWasNotSentIsNot)
{
    bus.fault("echo=9@6111:1");
    EXPECT_FALSE(job.switchOff(5).agreed);
    ASSERT_EQ(job.record().downloads.size(), 1U);
    EXPECT_EQ(job.record().downloads[0].verdict, Verdict::Differs);
    EXPECT_EQ(job.record().downloads[0].largestDifference, 100);
    module1.setReadOnly(true);
    const auto refused = job.switchOff(5);
    EXPECT_FALSE(refused.agreed);
    EXPECT_EQ(refused.words.size(), 1);
    EXPECT_EQ(job.record().downloads.size(), 1U);
}

TEST(DownloadNoteOf, ShortEchoIsIncomplete)
{
    link::Exchange exchange;
    exchange.transaction = protocol::tableDownload(protocol::Sensor::X, "05", {});
    exchange.reply = exchange.transaction.frame;
    const auto& reading = directionOf("X")->readings[0];
    EXPECT_FALSE(noteOf(reading, 5, true, exchange)) << "nothing was sent";
    exchange.sent = exchange.transaction.frame.size();
    EXPECT_EQ(noteOf(reading, 5, true, exchange)->verdict, Verdict::Agrees);
    exchange.reply.pop_back();
    const auto note = noteOf(reading, 5, false, exchange);
    EXPECT_EQ(note->verdict, Verdict::Incomplete);
    EXPECT_FALSE(note->largestDifference);
    EXPECT_THAT(textOf(*note).toStdString(),
                HasSubstr("Readout 5 did not repeat the table of X_Data whole."));
}

} // namespace
} // namespace quorvel::calibration
