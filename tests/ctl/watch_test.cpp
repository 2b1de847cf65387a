#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>

namespace quorvel::test {
namespace {

constexpr int kWithin = 60'000; // ms

/// `quorvelctl watch` and `site create` before a bus with readouts 5 (type A) and 12 (type C).
class QuorvelctlWatch : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments) { return runProgram("quorvelctl", arguments); }
    QString writeSite(const QJsonArray& readouts, const QString& port)
    {
        const auto path = folder.filePath("dam.quorvel-site.json");
        QFile file(path);
        const QJsonObject site{{"name", "Dam"}, {"port", port}, {"readouts", readouts}};
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(site).toJson()) > 0);
        return path;
    }
    static QJsonObject readout(int address, const char* type)
    {
        return {{"address", address}, {"type", type}, {"name", QStringLiteral("block %1").arg(address)}};
    }
    QString writeSite() { return writeSite({readout(5, "A"), readout(12, "C")}, bus.device()); }
    void start(const QStringList& arguments)
    {
        process.start(programPath("quorvelctl"), arguments);
        ASSERT_TRUE(process.waitForStarted(kWithin));
    }
    /// Waits until the process has said this on stderr, or printed it.
    void expect(const char* words)
    {
        const auto said = [&] {
            heard += process.readAllStandardError() + process.readAllStandardOutput();
            return heard.contains(words);
        };
        ASSERT_TRUE(QTest::qWaitFor(said, kWithin)) << words << " is not in " << heard.toStdString();
        heard.clear();
    }
    int ended()
    {
        EXPECT_TRUE(process.waitForFinished(kWithin));
        return process.exitCode();
    }

    QTemporaryDir folder;
    SimulatedBus bus{
        {"--fast", "--seed", "1", "--tcp", "127.0.0.1:0", "--readout", "5:A", "--readout", "12:C"}};
    QProcess process;
    QByteArray heard;
};

TEST_F(QuorvelctlWatch, OfASitePrintsEachReadout)
{
    const auto watched =
        run({"watch", "--site", writeSite(), "--every", "1s", "--count", "1", "--format", "ndjson"});
    EXPECT_EQ(watched.status, 0) << qPrintable(watched.err);
    ASSERT_EQ(watched.lines().size(), 2) << qPrintable(watched.out);
    const auto object = QJsonDocument::fromJson(watched.lines()[1].toUtf8()).object();
    EXPECT_EQ(object["site"], "Dam");
    EXPECT_EQ(object["name"], "block 12");
    EXPECT_TRUE(object["z2Mm"].isDouble());
    EXPECT_EQ(object["outcome"], "complete");
}

TEST_F(QuorvelctlWatch, OfReadoutsNeedsNoSite)
{
    const auto watched = run({"--port", bus.device(), "watch", "--readout", "5:A", "--readout", "77:B",
                              "--every", "1", "--count", "1", "--format", "csv"});
    EXPECT_EQ(watched.status, 0) << qPrintable(watched.err);
    ASSERT_EQ(watched.lines().size(), 3);
    EXPECT_TRUE(watched.lines()[2].endsWith(",77,,B,,,,,silent")) << qPrintable(watched.out);
}

TEST_F(QuorvelctlWatch, AWrongSiteIsNamedWithItsLineBeforeThePortIsOpened)
{
    const auto site = writeSite({readout(250, "A")}, "/dev/ttyNowhere");
    const auto watched = run({"watch", "--site", site, "--count", "1"});
    EXPECT_EQ(watched.status, 1);
    EXPECT_TRUE(watched.err.contains("dam.quorvel-site.json, line ")) << qPrintable(watched.err);
    EXPECT_FALSE(watched.err.contains("ttyNowhere"));
}

TEST_F(QuorvelctlWatch, WrongUsageIsExitStatus2)
{
    for (const auto& arguments :
         {QStringList{"--readout", "250:A"},
          {"--readout", "5:E"},
          {"--readout", "5:A", "--readout", "5:B"},
          {"--readout", "5:A", "--site", "a"},
          {"--readout", "5:A", "--address", "5"},
          {"--site", "a", "--address", "5"},
          {"--readout", "5:A", "--json", "--format", "csv"},
          {},
          {"--readout", "5:A", "--count", "0"},
          {"--readout", "5:A", "--every", "0"},
          {"--readout", "5:A", "--every", "25h"},
          {"--readout", "5:A", "--format", "xml"},
          {"--readout", "5:A", "--daily"},
          {"--readout", "5:A", "--daily", "--output", "a", "--format", "prometheus"}}) {
        const auto ended = run(QStringList{"--port", "/dev/ttyNowhere", "watch"} + arguments);
        EXPECT_EQ(ended.status, 2) << qPrintable(arguments.join(' ')) << qPrintable(ended.err);
    }
}

TEST_F(QuorvelctlWatch, APortThatCannotBeOpenedIsExitStatus3UnlessItWaits)
{
    const auto port = folder.filePath("adapter");
    EXPECT_EQ(run({"--port", port, "watch", "--readout", "5:A", "--count", "1"}).status, 3);
    const SimulatedBus serial({"--fast", "--readout", "5:A"});
    start({"--port", port, "watch", "--wait", "--readout", "5:A", "--every", "1"});
    expect("Waiting for it.");
    expect("port lost");
    ASSERT_TRUE(QFile::link(serial.device(), port));
    expect("is open again.");
    expect("  X: ");
    process.terminate();
    EXPECT_EQ(ended(), 143);
}

TEST_F(QuorvelctlWatch, TakesTheSiteOfTheEnvironmentUnlessReadoutsAreNamed)
{
    qputenv("QUORVEL_SITE", writeSite().toLocal8Bit());
    qputenv("QUORVEL_ADDRESS", "12");
    const auto restored = qScopeGuard([] {
        qunsetenv("QUORVEL_SITE");
        qunsetenv("QUORVEL_ADDRESS");
    });
    const QStringList once{"--port", bus.device(), "watch", "--every", "1", "--count", "1"};
    EXPECT_EQ(run(once).lines().size(), 2) << "both readouts of the site";
    EXPECT_EQ(run(once + QStringList{"--readout", "12:A"}).lines().size(), 1);
    EXPECT_TRUE(run(once + QStringList{"--address", "5"}).out.contains(" X: "))
        << "the time of day and one reading";
    EXPECT_EQ(run(once + QStringList{"--address", "5"}).lines().size(), 1);
}

TEST_F(QuorvelctlWatch, FailsWhenItsFileLacksReadingsAtTheEnd)
{
    for (const auto* format : {"text", "ndjson", "csv", "influx", "prometheus"}) {
        const auto watched =
            run({"--port", bus.device(), "watch", "--readout", "5:A", "--every", "1", "--count", "1",
                 "--format", format, "--output", folder.filePath("nowhere/a")});
        EXPECT_EQ(watched.status, 1) << format;
        EXPECT_TRUE(watched.err.endsWith("The readings that it lacks are lost.\n"))
            << qPrintable(watched.err);
    }
}

TEST_F(QuorvelctlWatch, OfOneReadoutIsOverWithThePort)
{
    start({"--port", bus.device(), "--address", "5", "watch", "--every", "1"});
    expect("  X: ");
    bus.unplug();
    EXPECT_EQ(ended(), 3);
    const auto said = heard + process.readAllStandardError();
    EXPECT_EQ(said.count('\n'), 1) << "no second word about trying again: " << said.toStdString();
}

TEST_F(QuorvelctlWatch, GoesOnThroughAPulledAdapter)
{
    start({"watch", "--site", writeSite(), "--every", "1"});
    expect("block 12  X: ");
    bus.unplug();
    expect(" Check the adapter and the cable.\n"); // and nothing that somebody would have to do by hand
    expect("block 12  port lost");
    bus.command("plug");
    expect("is open again.");
    expect("block 12  X: ");
    process.terminate();
    EXPECT_EQ(ended(), 143);
}

TEST_F(QuorvelctlWatch, ReadsTheSiteAnewOnSighup)
{
    const auto site = writeSite({readout(5, "A")}, bus.device());
    start({"watch", "--site", site, "--every", "1"});
    expect("block 5  X: ");
    writeSite({readout(5, "A"), readout(0, "A")}, bus.device());
    ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGHUP), 0);
    expect("The site stays as it was.");
    expect("block 5  X: ");
    writeSite();
    ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGHUP), 0);
    expect("The site was read anew: 2 readouts.");
    expect("block 12  X: ");
    process.terminate();
    EXPECT_EQ(ended(), 143);
}

TEST_F(QuorvelctlWatch, SiteCreateWritesNothingWhenThePortIsLost)
{
    const auto file = folder.filePath("new.quorvel-site.json");
    bus.fault("hangup@2102");
    const auto made = run({"--port", bus.device(), "site", "create", file, "--yes"});
    EXPECT_EQ(made.status, 3);
    EXPECT_FALSE(made.out.contains("12")) << "what type it has is not known: " << qPrintable(made.out);
    EXPECT_TRUE(made.err.endsWith("No file was written.\n")) << qPrintable(made.err);
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(QuorvelctlWatch, SiteCreateWritesWhatTheBusTells)
{
    const auto file = folder.filePath("new.quorvel-site.json");
    const QStringList create{"--port", bus.device(), "site", "create", file, "--name", "North dam"};
    EXPECT_EQ(run(create).status, 6) << "nobody has agreed";
    EXPECT_EQ(run(create + QStringList{"--read-only"}).status, 6) << "that is no yes";
    EXPECT_FALSE(QFile::exists(file));
    const auto made = run(create + QStringList{"--yes", "--json"});
    EXPECT_EQ(made.status, 0) << qPrintable(made.err);
    EXPECT_EQ(made.out, "{\"address\":5,\"type\":\"A\"}\n{\"address\":12,\"type\":\"C\"}\n");
    EXPECT_EQ(run(create + QStringList{"--yes"}).status, 6) << "it exists";
    EXPECT_EQ(run(create + QStringList{"--yes", "--force"}).status, 0);
    QFile written(file);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const auto site = QJsonDocument::fromJson(written.readAll()).object();
    EXPECT_EQ(site["name"], "North dam");
    EXPECT_EQ(site["port"], bus.device());
    EXPECT_EQ(site["readouts"].toArray().size(), 2);
    EXPECT_EQ(run({"watch", "--site", file, "--every", "1", "--count", "1"}).lines().size(), 2);
}

} // namespace
} // namespace quorvel::test
