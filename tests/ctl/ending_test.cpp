#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>

namespace quorvel::test {
namespace {

constexpr int kPatience = 20'000; // ms

/// `quorvelctl` that is asked to end, or whose answers nobody takes.
class QuorvelctlEnds : public ::testing::Test {
protected:
    void start(const QStringList& arguments)
    {
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(programPath("quorvelctl"),
                      QStringList({"--port", bus.device(), "--address", "5"}) + arguments);
        ASSERT_TRUE(process.waitForStarted(kPatience));
    }
    void signal(int number) { ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), number), 0); }
    int ended()
    {
        EXPECT_TRUE(process.waitForFinished(kPatience));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << "killed";
        return process.exitCode();
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--ring", "5:1000,0,900"}};
    QProcess process;
};

TEST_F(QuorvelctlEnds, WatchWithAStatusOfItsOwnForEachSignal)
{
    for (const auto& [number, status] : {std::pair{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}}) {
        start({"watch", "--every", "1"});
        ASSERT_TRUE(process.waitForReadyRead(kPatience));
        signal(number);
        EXPECT_EQ(ended(), status);
    }
}

TEST_F(QuorvelctlEnds, ADownloadWithEveryRecordThatItCounted)
{
    const QTemporaryDir folder;
    const auto file = folder.filePath("a.csv");
    start({"download", file});
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile(file).size() > 200; }, kPatience));
    signal(SIGINT);
    EXPECT_EQ(ended(), 130);
    QFile rows(file);
    ASSERT_TRUE(rows.open(QIODevice::ReadOnly));
    const auto text = rows.readAll();
    EXPECT_TRUE(text.endsWith('\n'));
    EXPECT_EQ(process.readAllStandardOutput().trimmed().toInt(), text.count('\n') - 1);
}

// Broken off, it would leave the offset at zero.
TEST_F(QuorvelctlEnds, AReferenceIsFinishedFirst)
{
    bus.command("set 5 offsetx +0.25000");
    start({"reference", "X", "10"});
    ASSERT_TRUE(QTest::qWaitFor([this] { return bus.frames().contains(":0571+0.00000FF"); }, kPatience));
    signal(SIGINT);
    EXPECT_EQ(ended(), 130);
    const auto told = QString::fromUtf8(process.readAllStandardError());
    EXPECT_TRUE(told.startsWith("The offset was +0.25000.\n")) << qPrintable(told);
    EXPECT_TRUE(told.contains("Set OK!")) << qPrintable(told);
    EXPECT_NE(bus.state(5)["offsets"].toObject()["X"].toString(), "+0.00000");
}

TEST_F(QuorvelctlEnds, ASecondSignalEndsAtOnce)
{
    start({"reference", "X", "10"});
    ASSERT_TRUE(QTest::qWaitFor([this] { return bus.frames().contains(":0571+0.00000FF"); }, kPatience));
    signal(SIGINT);
    QTest::qWait(100);
    signal(SIGINT);
    EXPECT_TRUE(process.waitForFinished(kPatience));
    EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
}

TEST_F(QuorvelctlEnds, AnswersThatCannotBeWrittenAreAFailure)
{
    for (const auto& arguments :
         {QStringList{"read"}, {"offset", "X"}, {"search"}, {"watch", "--every", "1"}}) {
        process.setStandardOutputFile("/dev/full");
        start(arguments);
        EXPECT_EQ(ended(), 1) << qPrintable(arguments.join(' '));
        const auto told = QString::fromUtf8(process.readAllStandardError());
        EXPECT_EQ(told.count("The answer cannot be written: "), 1) << qPrintable(told);
    }
}

TEST_F(QuorvelctlEnds, AWatchWhoseReaderHasGoneLetsGoOfThePort)
{
    process.start("bash",
                  {"-c", "\"$0\" --port \"$1\" --address 5 watch --every 1 | head -1; exit ${PIPESTATUS[0]}",
                   programPath("quorvelctl"), bus.device()});
    EXPECT_EQ(ended(), 1);
    EXPECT_EQ(process.readAllStandardOutput().count('\n'), 1);
}

TEST_F(QuorvelctlEnds, GarbledCharactersAreNotAReading)
{
    bus.fault("badnumber@2101");
    start({"read"});
    EXPECT_EQ(ended(), 5);
    EXPECT_TRUE(process.readAllStandardOutput().isEmpty());
    const auto told = QString::fromUtf8(process.readAllStandardError());
    EXPECT_TRUE(told.endsWith("which is not a reading.\n")) << qPrintable(told);
}

} // namespace
} // namespace quorvel::test
