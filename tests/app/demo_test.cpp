#include "support/program_run.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

TEST(TerminalDemo, SearchesAndTakesThreeReadings)
{
    QProcess demo;
    const auto binaries = QFileInfo(programPath(QStringLiteral("quorvelctl"))).path();
    demo.start(QStringLiteral(QUORVEL_ROOT "/tools/terminal-demo"), {binaries});
    ASSERT_TRUE(demo.waitForFinished(60'000));
    EXPECT_EQ(demo.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(demo.exitCode(), 0);
    EXPECT_EQ(demo.readAllStandardError(), "");
    const QRegularExpression expected(R"(^Simulated bus on \S+\. Searching \.\.\.\n)"
                                      R"(05\n12\n33\n100\n249\n)"
                                      R"(Three live readings of readout 5:\n)"
                                      R"((\d\d:\d\d:\d\d  X: [+-][\d.]{7}  Y: [+-][\d.]{7}\n){3}$)");
    const auto out = QString::fromUtf8(demo.readAllStandardOutput());
    EXPECT_TRUE(expected.match(out).hasMatch()) << qPrintable(out);
}

} // namespace
} // namespace quorvel::test
