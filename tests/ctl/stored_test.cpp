#include "autoread/exported.h"
#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quorvel::test {
namespace {

/// `quorvelctl` before a simulated bus whose readout 5 holds 8 records; 12 is of type C.
class QuorvelctlStored : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments, const QString& address = "5")
    {
        return runProgram("quorvelctl",
                          QStringList({"--port", bus.device(), "--address", address}) + arguments);
    }
    QJsonObject object(const QStringList& arguments, const QString& address = "5")
    {
        const auto ran = run(arguments + QStringList("--json"), address);
        return QJsonDocument::fromJson(ran.out.toUtf8()).object();
    }
    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }
    std::string content(const QString& name) const { return contents(file(name).toStdString()); }
    int stored(int address) { return bus.state(address).value("ring").toObject().value("stored").toInt(); }

    SimulatedBus bus{{"--fast", "--seed", "1", "--clock", "2024-05-17T09:05:30", "--readout", "5:A",
                      "--readout", "12:C", "--ring", "5:1000,0,8", "--ring", "12:1000,0,3"}};
    QTemporaryDir folder;
};

TEST_F(QuorvelctlStored, RingIsShown)
{
    const auto words = run({"ring"});
    EXPECT_EQ(words.status, 0) << qPrintable(words.err);
    EXPECT_TRUE(words.out.startsWith(
        "Readout 5, type A, B or D: 8 records, room for 1000\nFirst: 2024-05-17 02:00:00  x "))
        << qPrintable(words.out);
    const auto ring = object({"ring"}, "12");
    EXPECT_EQ(ring.value("type").toString(), "C");
    EXPECT_EQ(ring.value("records").toInt(), 3);
    EXPECT_TRUE(ring.value("last").toObject().value("z2Mm").isDouble());
    EXPECT_TRUE(ring.value("clock").toObject().value("aheadSeconds").isDouble());
    bus.fault("silent@5/22");
    EXPECT_EQ(run({"ring"}).status, 4);
}

TEST_F(QuorvelctlStored, BrokenDownloadGoesOnWhereItEnded)
{
    ASSERT_EQ(run({"download", file("through.csv")}).status, 0);
    bus.fault("silent@5/24:1+3");
    EXPECT_EQ(run({"download", file("a.csv")}).status, 4);
    const auto rest = run({"download", "--continue", file("a.csv")});
    EXPECT_EQ(rest.status, 0) << qPrintable(rest.err);
    EXPECT_EQ(rest.out, "5\n");
    EXPECT_EQ(content("a.csv"), content("through.csv"));
    bus.command("take 5");
    const auto month = object({"download", "--continue", file("a.csv")});
    EXPECT_EQ(month.value("received").toInt(), 1);
    EXPECT_EQ(month.value("rowsBefore").toInt(), 8);
    EXPECT_TRUE(month.value("continued").toBool());
}

TEST_F(QuorvelctlStored, ContinuingWithAGapNeedsYes)
{
    ASSERT_EQ(run({"download", file("a.csv")}).status, 0);
    bus.command("set 5 ring 1000,0,0");
    bus.command("take 5 2");
    const auto before = content("a.csv");
    const auto asked = run({"download", "--continue", file("a.csv")});
    EXPECT_EQ(asked.status, 6);
    EXPECT_TRUE(asked.err.contains("The readout no longer holds the last record of the file"))
        << qPrintable(asked.err);
    EXPECT_TRUE(asked.err.endsWith("Nothing was fetched. Add --yes to continue all the same.\n"));
    EXPECT_EQ(content("a.csv"), before);
    EXPECT_EQ(run({"download", "--continue", "--yes", file("a.csv")}).out, "2\n");
}

TEST_F(QuorvelctlStored, FileOfAnotherTypeIsNotContinued)
{
    ASSERT_EQ(run({"download", file("a.csv")}).status, 0);
    const auto asked = run({"download", "--continue", file("a.csv")}, "12");
    EXPECT_EQ(asked.status, 1);
    EXPECT_TRUE(asked.err.contains("The readout is of type C, but the file has no columns for Z"))
        << qPrintable(asked.err);
    EXPECT_EQ(run({"download", "--continue", file("missing.csv")}).status, 1);
}

TEST_F(QuorvelctlStored, ZIsNeverLostWhateverTypeIsGiven)
{
    for (const QStringList& type :
         {QStringList(), QStringList({"--type", "A"}), QStringList({"--type", "C"})}) {
        const auto name = QStringLiteral("z") + type.join(QString()) + ".csv";
        const auto report = object(QStringList({"download", file(name)}) + type, "12");
        EXPECT_EQ(report.value("type").toString(), "C");
        EXPECT_THAT(content(name), ::testing::StartsWith("time,x,y,z1,z2\n"));
        EXPECT_EQ(rowsIn(content(name)), 3);
    }
}

TEST_F(QuorvelctlStored, RetriesAskAgainForWhatIsNotTheAnswer)
{
    for (const auto* fault : {"silent@5/24:2+3", "slot@5/24:2+3", "baddate@5/24:1+3", "short@5/24:2+3"}) {
        bus.clearFaults();
        bus.fault(fault);
        const auto report = object({"download", "--force", "--retries", "2", file("a.csv")});
        EXPECT_TRUE(report.value("complete").toBool()) << fault;
        EXPECT_GT(report.value("line").toObject().value("askedAgain").toInt(), 0) << fault;
        EXPECT_EQ(report.value("findings").toArray().size(), 0) << fault;
    }
}

TEST_F(QuorvelctlStored, ReplyOfAnotherSlotIsNotStored)
{
    bus.fault("slot@5/24:1+3");
    const auto download = run({"download", file("a.csv")});
    EXPECT_EQ(download.status, 5);
    EXPECT_EQ(download.out, "3\n");
    EXPECT_TRUE(download.err.contains(
        "Record 0003 was asked for, but the reply is not its answer: it is of slot 0004."))
        << qPrintable(download.err);
}

TEST_F(QuorvelctlStored, VerifySeesAFlippedDigit)
{
    ASSERT_EQ(run({"download", file("through.csv")}).status, 0);
    bus.fault("echo=25@5/24:1+2");
    bus.fault("echo=25@5/24:1+6");
    const auto report = run({"download", "--verify", "--retries", "1", file("a.csv")});
    EXPECT_EQ(report.status, 0) << qPrintable(report.err);
    EXPECT_TRUE(report.err.startsWith(
        "Each record is asked for until two replies agree: this takes twice the time.\n"));
    EXPECT_EQ(content("a.csv"), content("through.csv"));
}

TEST_F(QuorvelctlStored, OverwrittenFileIsKeptUntilTheNewOneIsComplete)
{
    ASSERT_EQ(run({"download", file("a.csv")}).status, 0);
    const auto old = content("a.csv");
    bus.fault("silent@5/24:1+3");
    const auto broken = run({"download", "--force", file("a.csv")});
    const auto kept = QDir(folder.path()).entryList({"a.2*.csv"});
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(content(kept[0]), old);
    EXPECT_TRUE(broken.err.contains("The file that was there before is kept as " + file(kept[0]) + "."))
        << qPrintable(broken.err);
    EXPECT_EQ(run({"download", "--force", file("a.csv")}).status, 0);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 2)
        << "the copy of the broken one stays no longer";
}

TEST_F(QuorvelctlStored, CheckAndClearGoByTheFile)
{
    ASSERT_EQ(run({"download", file("a.csv")}).status, 0);
    const auto safe = run({"check", file("a.csv")});
    EXPECT_EQ(safe.status, 0);
    EXPECT_TRUE(safe.out.startsWith("Safe to delete: all 8 records that readout 5 holds are in "))
        << qPrintable(safe.out);
    bus.command("take 5 3");
    EXPECT_EQ(run({"check", file("a.csv")}).status, 6);
    EXPECT_FALSE(object({"check", file("a.csv")}).value("safe").toBool());
    const auto refused = run({"clear", "--yes", "--taken", file("a.csv")});
    EXPECT_EQ(refused.status, 6);
    EXPECT_TRUE(refused.err.endsWith(" Nothing was deleted.\n")) << qPrintable(refused.err);
    EXPECT_TRUE(refused.err.contains("3 were taken since")) << qPrintable(refused.err);
    EXPECT_EQ(stored(5), 11);
    ASSERT_EQ(run({"download", "--continue", file("a.csv")}).status, 0);
    const auto cleared = run({"clear", "--yes", "--taken", file("a.csv")});
    EXPECT_EQ(cleared.status, 0) << qPrintable(cleared.err);
    EXPECT_TRUE(cleared.out.endsWith("It holds no records now.\n")) << qPrintable(cleared.out);
    EXPECT_EQ(stored(5), 0);
}

TEST_F(QuorvelctlStored, ClearWithoutFilesDeletesAllTheSame)
{
    EXPECT_EQ(run({"clear", "--taken", file("missing.csv")}).status, 6);
    EXPECT_EQ(run({"clear", "--yes", "--taken", file("missing.csv")}).status, 6);
    EXPECT_EQ(stored(5), 8);
    EXPECT_EQ(run({"clear", "--yes"}).status, 0);
    EXPECT_EQ(stored(5), 0);
    EXPECT_EQ(run({"clear", "--yes"}, "12").status, 0);
    EXPECT_EQ(stored(12), 0);
}

TEST_F(QuorvelctlStored, OtherCharactersAreNoDeletion)
{
    bus.fault("garbled@5/25");
    const auto cleared = run({"clear", "--yes"});
    EXPECT_EQ(cleared.status, 5);
    EXPECT_FALSE(cleared.err.contains("Data Deleted"));
    EXPECT_TRUE(cleared.err.startsWith("Readout 5 answered the deletion with other characters, "))
        << qPrintable(cleared.err);
}

} // namespace
} // namespace quorvel::test
