#include "support/program_run.h"

#include <QCoreApplication>
#include <QProcess>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

class Program : public ::testing::TestWithParam<const char*> {
protected:
    Program() { qputenv("QT_QPA_PLATFORM", "offscreen"); }
};

TEST_P(Program, NamesItsVersionAndEdition)
{
    const auto ended = runProgram(GetParam(), {"--version"});
    EXPECT_EQ(ended.status, 0);
    const bool factory = QString(GetParam()).endsWith("factory");
    EXPECT_EQ(ended.out, factory ? "QUORVEL V4.11 FACTORY\n" : "QUORVEL V4.11 USER\n");
}

TEST_P(Program, ExplainsItself)
{
    const auto ended = runProgram(GetParam(), {"--help"});
    EXPECT_EQ(ended.status, 0);
    for (const auto* option : {"--port", "--folder", "--demo", "--read-only", "--trace"}) {
        EXPECT_TRUE(ended.out.contains(option)) << option;
    }
}

TEST_P(Program, RefusesWhatItDoesNotKnow)
{
    for (const auto& arguments : {QStringList{"--fly"}, {"file.txt"}, {"--port"}}) {
        const auto ended = runProgram(GetParam(), arguments);
        EXPECT_EQ(ended.status, 2) << qPrintable(arguments.join(' '));
        EXPECT_FALSE(ended.err.isEmpty());
    }
}

TEST_P(Program, IsClosedByARequestToEnd)
{
    QProcess process;
    process.start(programPath(GetParam()), {"--no-journal"});
    ASSERT_TRUE(process.waitForStarted());
    EXPECT_FALSE(process.waitForFinished(1500)) << "still running";
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(20'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
}

INSTANTIATE_TEST_SUITE_P(Editions, Program, ::testing::Values("quorvel", "quorvel-factory"),
                         [](const auto& program) {
                             return QString(program.param).remove('-').toStdString();
                         });

} // namespace
} // namespace quorvel::test
