#include "support/program_run.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

/// Runs a tool on a port that is not there, with a file that is there and a folder for new ones. What is wrong with the
/// command line itself must be told nevertheless, and before anything is touched.
class QuorvelctlUsage : public ::testing::Test {
protected:
    QuorvelctlUsage()
    {
        QFile file(there);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }
    static ProgramRun run(const QStringList& arguments, const char* program = "quorvelctl-factory")
    {
        return runProgram(QString::fromLatin1(program), QStringList{"--port", "/dev/ttyNowhere"} + arguments);
    }
    static void expectRefused(const QStringList& arguments, const QString& words)
    {
        const auto ended = run(arguments);
        EXPECT_EQ(ended.status, 2) << qPrintable(arguments.join(' ')) << ": " << qPrintable(ended.err);
        EXPECT_TRUE(ended.err.contains(words))
            << qPrintable(arguments.join(' ')) << ": " << qPrintable(ended.err);
        EXPECT_FALSE(ended.err.contains("ttyNowhere")) << qPrintable(ended.err);
    }

    QTemporaryDir folder;
    QString there = folder.filePath("there.mdb");
};

TEST_F(QuorvelctlUsage, AWrongOptionIsToldBeforeThePortIsOpened)
{
    for (const auto& command : {QStringList{"search"},
                                {"read", "--address", "5"},
                                {"watch", "--address", "5"},
                                {"settings", "--address", "5"},
                                {"reset", "--yes", "--address", "5"}}) {
        expectRefused(command + QStringList{"--wrong"}, "--wrong");
        expectRefused(command + QStringList{"--type", "E"}, "--type");
    }
}

TEST_F(QuorvelctlUsage, AnAddressThatNoReadoutHasIsToldWhateverTheCommandDoesFirst)
{
    const QString words("--address");
    for (const auto& command : {QStringList{"read"},
                                {"watch"},
                                {"offset", "X"},
                                {"wire"},
                                {"settings"},
                                {"settings", "save", folder.filePath("new.json")},
                                {"settings", "restore", folder.filePath("missing.json")},
                                {"download", there},
                                {"grayscale", "X", "--data", there},
                                {"calibrate", "X", "--folder", "/nowhere", "measure", "--point", "0"},
                                {"calibrate", "X", "--folder", "/nowhere", "download"},
                                {"stitching"}}) {
        expectRefused(command, words);
        expectRefused(command + QStringList{"--address", "250"}, words);
    }
    for (const auto* wrong : {"0", "5x", "-1", ""})
        expectRefused({"search", "--address", wrong}, words);
}

TEST_F(QuorvelctlUsage, AValueThatTheReadoutCannotTakeIsToldBeforeThePortIsOpened)
{
    const auto refused = [](const QStringList& arguments, const QString& words) {
        expectRefused(QStringList{"--address", "5"} + arguments, words);
    };
    refused({"wire", "10", "1"}, "0 to 9.9 mm");
    refused({"offset", "Z"}, "no Z direction");
    refused({"reference", "Z", "1"}, "no Z direction");
    refused({"invert", "Z"}, "no Z direction");
    refused({"address", "5"}, "New Address is same as Old Address");
    refused({"stitching", "36"}, "4");
    refused({"calibrate", "X", "--folder", "/nowhere", "measure", "--point", "0", "--dial", "1,5"}, "--dial");
}

TEST_F(QuorvelctlUsage, ADeviceServerWithoutPortIsWrongUsage)
{
    for (const auto* name : {"tcp:", "tcp:host", "tcp:host:", "tcp::4001", "tcp:host:0", "tcp:host:99999"}) {
        const auto ended = runProgram("quorvelctl", {"--port", name, "search"});
        EXPECT_EQ(ended.status, 2) << name;
        EXPECT_TRUE(ended.err.contains("tcp:host:port")) << name << ": " << qPrintable(ended.err);
    }
}

TEST_F(QuorvelctlUsage, MeasuringWithoutAddressMakesNoFile)
{
    EXPECT_EQ(run({"calibrate", "X", "--folder", folder.path(), "measure", "--point", "0"}).status, 2);
    EXPECT_FALSE(QFileInfo::exists(folder.filePath("XDirection.mdb")));
}

TEST_F(QuorvelctlUsage, AFileThatExistsIsToldBeforeThePortIsOpened)
{
    const auto ended = run({"download", there, "--address", "5"});
    EXPECT_EQ(ended.status, 6);
    EXPECT_TRUE(ended.err.contains("--force")) << qPrintable(ended.err);
}

} // namespace
} // namespace quorvel::test
