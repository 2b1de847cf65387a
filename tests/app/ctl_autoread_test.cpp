#include "autoread/exported.h"
#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

/// `quorvelctl` before a simulated bus whose readout 5 holds records 10 to 14, and 12 (type C) three of three.
class QuorvelctlAutoread : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments, const QString& address = "5")
    {
        return runProgram("quorvelctl",
                          QStringList({"--port", bus.device(), "--address", address}) + arguments);
    }
    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }
    int rows(const QString& name) const { return rowsIn(exported(file(name).toStdString())); }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C", "--ring",
                      "5:1000,10,15", "--ring", "12:3,2,1"}};
    QTemporaryDir folder;
};

TEST_F(QuorvelctlAutoread, ShowsAndSetsTheInterval)
{
    EXPECT_EQ(run({"auto"}).out, "Current Interval is 1 hours 0 minutes 0 seconds\n");
    const auto set = run({"auto", "--set", "5m"});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.err, "Set OK\n");
    EXPECT_EQ(run({"auto", "--json"}).out, "{\"address\":5,\"mode\":1,\"values\":[0,5,0,0]}\n");
    EXPECT_EQ(run({"auto", "--set", "7m"}).status, 2);
}

TEST_F(QuorvelctlAutoread, DownloadsIntoADatabase)
{
    const auto download = run({"download", file("a.mdb")});
    EXPECT_EQ(download.status, 0) << qPrintable(download.err);
    EXPECT_EQ(download.out, "5\n");
    EXPECT_TRUE(download.err.endsWith("Total 5 records. 5 records have been received.\n"));
    EXPECT_EQ(rows("a.mdb"), 5);
}

TEST_F(QuorvelctlAutoread, DownloadsThreeDirectionsAsCsv)
{
    const auto download = run({"download", file("c.csv"), "--type", "C", "--json"}, "12");
    EXPECT_EQ(download.status, 0) << qPrintable(download.err);
    const auto object = QJsonDocument::fromJson(download.out.toUtf8()).object();
    EXPECT_EQ(object.value("records").toInt(), 3);
    QFile csv(file("c.csv"));
    ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
    EXPECT_EQ(csv.readLine(), "time,x,y,z1,z2\n");
}

TEST_F(QuorvelctlAutoread, OverwritesOnlyByForce)
{
    QFile old(file("a.csv"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    EXPECT_EQ(run({"download", file("a.csv")}).status, 1);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), "old");
    old.close();
    EXPECT_EQ(bus.frames(), QStringList());
    EXPECT_EQ(run({"download", file("a.csv"), "--force"}).status, 0);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readLine(), "time,x,y\n");
}

TEST_F(QuorvelctlAutoread, BrokenLineIsExitStatus1WithTheRecordsKept)
{
    bus.fault("silent@5/24:1+2");
    const auto download = run({"download", file("a.mdb")});
    EXPECT_EQ(download.status, 1);
    EXPECT_EQ(download.out, "2\n");
    EXPECT_TRUE(download.err.endsWith("\n2 records have been received, Comm Error\n"))
        << qPrintable(download.err);
    EXPECT_EQ(rows("a.mdb"), 2);
}

TEST_F(QuorvelctlAutoread, EmptyRingMakesNoFile)
{
    bus.command("set 5 ring 1000,5,5");
    const auto download = run({"download", file("a.mdb")});
    EXPECT_EQ(download.status, 0);
    EXPECT_EQ(download.err, "No Data\n");
    EXPECT_FALSE(QFile::exists(file("a.mdb")));
}

TEST_F(QuorvelctlAutoread, UnreadableCountIsNotTakenForAnEmptyRing)
{
    bus.command("reply 5 22 :0522ABCDEFGHIJKLFF");
    const auto download = run({"download", file("a.mdb")});
    EXPECT_EQ(download.status, 1);
    EXPECT_TRUE(download.err.contains("not readable")) << qPrintable(download.err);
}

TEST_F(QuorvelctlAutoread, ClearsOnlyWhenSure)
{
    EXPECT_EQ(run({"clear"}).status, 2);
    EXPECT_EQ(bus.frames(), QStringList());
    const auto cleared = run({"clear", "--yes"});
    EXPECT_EQ(cleared.status, 0);
    EXPECT_EQ(cleared.err, "Data Deleted\n");
    EXPECT_EQ(bus.state(5).value("ring").toObject().value("stored").toInt(), 0);
}

/// A download that runs by itself, with all that it shows.
class RunningDownload {
public:
    RunningDownload(const QString& device, const QString& file) : words_(file + ".words")
    {
        process_.setStandardErrorFile(words_.fileName());
        process_.start(programPath("quorvelctl"), {"--port", device, "--address", "5", "download", file});
    }

    /// The count shown last; 0 when none is.
    int shown()
    {
        if (!words_.isOpen() && !words_.open(QIODevice::ReadOnly)) return 0;
        all_ += words_.readAll();
        const auto end = all_.lastIndexOf(" records have been received.");
        return end < 0 ? 0 : all_.mid(all_.lastIndexOf(' ', end - 1) + 1, end).split(' ').first().toInt();
    }

    void kill()
    {
        process_.kill();
        EXPECT_TRUE(process_.waitForFinished());
    }

private:
    QProcess process_;
    QFile words_;
    QByteArray all_;
};

bool beginsAlike(const std::string& one, const std::string& other)
{
    const auto length = std::min(one.size(), other.size());
    return one.compare(0, length, other, 0, length) == 0;
}

TEST_F(QuorvelctlAutoread, KilledDownloadKeepsEveryRecordThatItHasShown)
{
    bus.command("set 5 ring 1000,998,2");
    std::string longest;
    for (int round = 0; round < 10; ++round) {
        const auto name = QStringLiteral("killed%1.mdb").arg(round);
        RunningDownload download(bus.device(), file(name));
        ASSERT_TRUE(QTest::qWaitFor([&] { return download.shown() > 0; }, 20'000)) << "nothing is shown";
        QThread::usleep(QRandomGenerator::global()->bounded(1'500'000));
        download.kill();
        const auto table = exported(file(name).toStdString());
        EXPECT_GE(rowsIn(table), download.shown()) << round;
        EXPECT_LE(rowsIn(table), download.shown() + 1) << round;
        EXPECT_TRUE(beginsAlike(table, longest)) << table << longest;
        if (table.size() > longest.size()) longest = table;
    }
    EXPECT_GT(rowsIn(longest), 1) << "every download was killed at its first record";
}

} // namespace
} // namespace quorvel::test
