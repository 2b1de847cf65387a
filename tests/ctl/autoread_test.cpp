#include "autoread/exported.h"
#include "autoread/largest_file.h"
#include "support/new_files.h"
#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>
#include <QThread>

#include <gmock/gmock.h>

#include <fcntl.h>

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
    /// The row that a record of readout 5 should give, asked for by hand.
    Row onTheBus(const QByteArray& index)
    {
        QFile port;
        EXPECT_TRUE(port.open(::open(bus.device().toLocal8Bit().constData(), O_RDWR | O_NOCTTY),
                              QIODevice::ReadWrite | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle));
        port.write(":0524" + index + "FF\r\n");
        return rowOnTheBus(port.readLine().toStdString(), 2);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C", "--ring",
                      "5:1000,10,15", "--ring", "12:3,2,1"}};
    QTemporaryDir folder;
};

TEST_F(QuorvelctlAutoread, ShowsAndSetsTheInterval)
{
    EXPECT_EQ(run({"auto"}).out, "Current Interval is 1 hours 0 minutes 0 seconds\n");
    const auto set = run({"auto", "5m"});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.err, "Set OK\n");
    EXPECT_EQ(set.out, "Current Interval is 0 hours 5 minutes 0 seconds\n");
    EXPECT_EQ(run({"auto", "--json"}).out,
              R"({"address":5,"hoursOfDay":null,"intervalSeconds":300,"mode":"interval"})"
              "\n");
    EXPECT_EQ(run({"auto", "7m"}).status, 2);
}

TEST_F(QuorvelctlAutoread, DownloadsIntoADatabase)
{
    const auto download = run({"download", file("a.mdb")});
    EXPECT_EQ(download.status, 0) << qPrintable(download.err);
    EXPECT_EQ(download.out, "5\n");
    EXPECT_EQ(download.err, "") << "progress is for a terminal";
    EXPECT_EQ(rows("a.mdb"), 5);
}

TEST_F(QuorvelctlAutoread, WrappedRingIsReadByOtherProgramsFromItsOldestRecord)
{
    bus.command("set 5 ring 60,58,2");
    const auto download = run({"download", file("a.mdb")});
    EXPECT_EQ(download.status, 0) << qPrintable(download.err);
    EXPECT_EQ(download.out, "60\n");
    const auto found = rowsOfMdbtools(file("a.mdb").toStdString());
    ASSERT_EQ(found.size(), 60U);
    EXPECT_EQ(found[0], onTheBus("0058"));
    EXPECT_EQ(found[1], onTheBus("0059"));
    EXPECT_EQ(found[2], onTheBus("0000"));
    EXPECT_EQ(found[59], onTheBus("0057"));
    EXPECT_EQ(rowsOfMdbReader(file("a.mdb").toStdString()), found);
}

TEST_F(QuorvelctlAutoread, DownloadsThreeDirectionsAsCsv)
{
    const auto download = run({"download", file("c.csv"), "--type", "C", "--json"}, "12");
    EXPECT_EQ(download.status, 0) << qPrintable(download.err);
    const auto object = QJsonDocument::fromJson(download.out.toUtf8()).object();
    EXPECT_EQ(object.value("received").toInt(), 3);
    QFile csv(file("c.csv"));
    ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
    EXPECT_EQ(csv.readLine(), "time,x,y,z1,z2\n");
}

TEST_F(QuorvelctlAutoread, OverwritesOnlyByForce)
{
    QFile old(file("a.csv"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    EXPECT_EQ(run({"download", file("a.csv")}).status, 6);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), "old");
    old.close();
    EXPECT_EQ(bus.frames(), QStringList());
    EXPECT_EQ(run({"download", file("a.csv"), "--force"}).status, 0);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readLine(), "time,x,y\n");
}

TEST_F(QuorvelctlAutoread, BrokenLineIsExitStatus4WithTheRecordsKept)
{
    bus.fault("silent@5/24:1+2");
    const auto download = run({"download", "--progress", file("a.mdb")});
    EXPECT_EQ(download.status, 4);
    EXPECT_EQ(download.out, "2\n");
    EXPECT_TRUE(download.err.contains("\n2 records have been received, Comm Error\n"))
        << qPrintable(download.err);
    EXPECT_EQ(rows("a.mdb"), 2);
}

TEST_F(QuorvelctlAutoread, PulledAdapterIsSaidOnALineOfItsOwn)
{
    bus.fault("hangup@5/24:1+2");
    const auto download = run({"download", "--progress", file("a.mdb")});
    EXPECT_EQ(download.status, 3);
    EXPECT_EQ(download.out, "2\n");
    EXPECT_TRUE(download.err.contains("2 records have been received.\n" + bus.device() + " is gone"))
        << qPrintable(download.err);
    EXPECT_TRUE(download.err.endsWith("\n2 records have been received, Comm Error\n"))
        << qPrintable(download.err);
}

TEST_F(QuorvelctlAutoread, SilentReadoutIsExitStatus4)
{
    bus.fault("silent@*");
    const std::pair<QStringList, QString> commands[] = {
        {{"auto"}, "Comm Error The readout did not answer.\n"},
        {{"auto", "5m"}, "Set Error The readout did not answer.\n"},
        {{"clear", "--yes"},
         "Comm Error The readout did not answer. Readout 5 did not confirm the deletion: whether it has "
         "deleted its "
         "records is not known. Asked afterwards, it did not say what it holds.\n"},
        {{"download", file("a.mdb")}, "Comm Error The readout did not answer.\n"}};
    for (const auto& [arguments, words] : commands) {
        const auto silent = run(arguments);
        EXPECT_EQ(silent.status, 4) << qPrintable(arguments[0]);
        EXPECT_EQ(silent.err, words) << qPrintable(arguments[0]);
        EXPECT_EQ(silent.out, "") << qPrintable(arguments[0]);
    }
    EXPECT_FALSE(QFile::exists(file("a.mdb")));
}

TEST_F(QuorvelctlAutoread, BadDateStaysEmptyAndTheRestFollows)
{
    bus.fault("baddate@5/24:1+2");
    const auto download = run({"download", file("a.csv")});
    EXPECT_EQ(download.status, 0);
    EXPECT_EQ(download.out, "5\n");
    EXPECT_TRUE(download.err.contains("Record 0012: no valid date and time: \"241332"))
        << qPrintable(download.err);
    const auto lines = linesOf(contents(file("a.csv").toStdString()));
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_TRUE(lines[3].starts_with(",")) << lines[3];
}

TEST_F(QuorvelctlAutoread, RingThatCannotBeFetchedMakesNoFile)
{
    bus.command("reply 5 22 :0522000000050007FF");
    const auto download = run({"download", file("a.mdb")});
    EXPECT_EQ(download.status, 5);
    EXPECT_TRUE(download.err.startsWith("The readout reports a ring without slots "))
        << qPrintable(download.err);
    EXPECT_FALSE(QFile::exists(file("a.mdb")));
}

TEST_F(QuorvelctlAutoread, MissingFolderIsSaidAndNothingFetched)
{
    const auto download = run({"download", file("missing/a.mdb")});
    EXPECT_EQ(download.status, 1);
    EXPECT_EQ(download.out, "");
    EXPECT_TRUE(download.err.startsWith(file("missing/a.mdb") + " could not be "))
        << qPrintable(download.err);
    EXPECT_EQ(bus.frames(), QStringList({":0522FF", ":0522FF"}));
}

TEST_F(QuorvelctlAutoread, FullDiskKeepsTheRowsBefore)
{
    bus.command("set 5 ring 1000,0,20");
    ProgramRun download;
    {
        const LargestFile limit(500); // about 14 records; the lock of the port needs a little, too
        download = run({"download", "--progress", file("a.csv")});
    }
    EXPECT_EQ(download.status, 1);
    const int kept = rowsIn(contents(file("a.csv").toStdString()));
    EXPECT_GT(kept, 10);
    EXPECT_EQ(download.out, QStringLiteral("%1\n").arg(kept));
    EXPECT_TRUE(
        download.err.contains(" records have been received.\n" + file("a.csv") + " could not be written: "))
        << qPrintable(download.err);
    EXPECT_TRUE(download.err.endsWith(
        QStringLiteral("the file holds the %1 records received before. The readout still has all its data.\n")
            .arg(kept)))
        << qPrintable(download.err);
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
    EXPECT_EQ(download.status, 5);
    EXPECT_TRUE(download.err.contains("could not be read")) << qPrintable(download.err);
}

TEST_F(QuorvelctlAutoread, ClearsOnlyWhenSure)
{
    EXPECT_EQ(run({"clear"}).status, 6);
    EXPECT_EQ(bus.frames(), QStringList());
    const auto cleared = run({"clear", "--yes"});
    EXPECT_EQ(cleared.status, 0);
    EXPECT_EQ(cleared.err, "Data Deleted\n");
    EXPECT_EQ(cleared.out, "Readout 5 confirmed the deletion of its records. It holds no records now.\n");
    EXPECT_EQ(bus.state(5).value("ring").toObject().value("stored").toInt(), 0);
}

/// A download that runs by itself, with all that it shows.
class RunningDownload {
public:
    RunningDownload(const QString& device, const QString& file)
    {
        EXPECT_TRUE(words_.open());
        process_.setStandardErrorFile(words_.fileName());
        process_.start(programPath("quorvelctl"),
                       {"--port", device, "--address", "5", "download", "--progress", "--force", file});
        EXPECT_TRUE(process_.waitForStarted());
    }

    /// The count shown last; 0 when none is.
    int shown()
    {
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
    QTemporaryFile words_;
    QByteArray all_;
};

constexpr int kHits = 4; // kills that must find the file in the making
constexpr int kMostRounds = 60;

bool beginsAlike(const std::string& one, const std::string& other)
{
    const auto length = std::min(one.size(), other.size());
    return one.compare(0, length, other, 0, length) == 0;
}

void sleepUpTo(quint32 microseconds) { QThread::usleep(QRandomGenerator::global()->bounded(microseconds)); }

/// A kind of file, and what reads it.
struct Kind {
    const char* ending;
    std::string (*read)(const std::filesystem::path&);
};

class KilledDownload : public QuorvelctlAutoread, public ::testing::WithParamInterface<Kind> {
protected:
    KilledDownload() { bus.command("set 5 ring 1000,998,2"); }

    QString name(int round) const { return QStringLiteral("killed%1.%2").arg(round).arg(GetParam().ending); }
    std::string read(const QString& name) const { return GetParam().read(file(name).toStdString()); }
    QStringList names() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }
    /// Starts a download and kills it about when its file is made; after a kill that came too late, sooner.
    /// @return whether it was: something new was left, and no record shown.
    bool killWhileMaking(const QString& name)
    {
        const auto before = names();
        NewFiles made(folder.path().toStdString());
        RunningDownload download(bus.device(), file(name));
        // the first one only shows that there may be one, and goes at once
        EXPECT_TRUE(made.wait(2, 20'000));
        sleepUpTo(longestWait_);
        download.kill();
        const bool late = download.shown() > 0;
        if (late) longestWait_ /= 2;
        return names() != before && !late;
    }

private:
    quint32 longestWait_ = 4000; // microseconds
};

TEST_P(KilledDownload, KeepsEveryRecordThatItHasShown)
{
    std::string longest;
    for (int round = 0; round < 4; ++round) {
        RunningDownload download(bus.device(), file(name(round)));
        ASSERT_TRUE(QTest::qWaitFor([&] { return download.shown() > 0; }, 20'000)) << "nothing is shown";
        sleepUpTo(900'000);
        download.kill();
        const auto table = read(name(round));
        EXPECT_GE(rowsIn(table), download.shown()) << round;
        EXPECT_LE(rowsIn(table), download.shown() + 1) << round;
        EXPECT_TRUE(beginsAlike(table, longest)) << table << longest;
        if (table.size() > longest.size()) longest = table;
    }
    EXPECT_GT(rowsIn(longest), 1) << "every download was killed at its first record";
}

TEST_P(KilledDownload, LeavesTheOldFileOrTheWholeNewOne)
{
    int hits = 0;
    for (int round = 0; round < kMostRounds && hits < kHits; ++round) {
        QFile old(file(name(0)));
        ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        hits += killWhileMaking(name(0)) ? 1 : 0;
        if (contents(file(name(0)).toStdString()) != "old") {
            EXPECT_THAT(read(name(0)), ::testing::StartsWith("time,x,y\n")) << round;
        }
    }
    EXPECT_EQ(hits, kHits) << "too few kills hit the making";
    bus.command("set 5 ring 1000,0,2");
    EXPECT_EQ(run({"download", "--force", file(name(0))}).out, "2\n") << "what was left beside is in the way";
}

TEST_P(KilledDownload, LeavesNoPartOfANewFile)
{
    int hits = 0;
    for (int round = 0; round < kMostRounds && hits < kHits; ++round) {
        hits += killWhileMaking(name(round)) ? 1 : 0;
        if (QFile::exists(file(name(round)))) {
            EXPECT_THAT(read(name(round)), ::testing::AnyOf("", ::testing::StartsWith("time,x,y\n")))
                << round;
        }
    }
    EXPECT_EQ(hits, kHits) << "too few kills hit the making";
}

INSTANTIATE_TEST_SUITE_P(Quorvelctl, KilledDownload,
                         ::testing::Values(Kind{"mdb", exported}, Kind{"csv", contents}),
                         [](const auto& kind) { return std::string(kind.param.ending); });

} // namespace
} // namespace quorvel::test
