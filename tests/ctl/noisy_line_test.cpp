#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

/// "240517090000" as a file has it.
QString isoOf(const QString& time)
{
    return QDateTime::fromString(QStringLiteral("20") + time, QStringLiteral("yyyyMMddHHmmss"))
        .toString(Qt::ISODate);
}

/// The lines that the stored records of readout 5 should give, as the simulator tells them.
QStringList expectedLines(SimulatedBus& bus)
{
    QStringList lines{QStringLiteral("time,x,y")};
    for (const auto& record : bus.command(QStringLiteral("records 5"))["records"].toArray()) {
        const auto fields = record.toObject()["fields"].toArray();
        lines << isoOf(fields[0].toString()) + u',' + QString::number(fields[1].toString().toDouble()) +
                     u',' + QString::number(fields[2].toString().toDouble());
    }
    return lines;
}

QStringList linesIn(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

/// A cable on which one character in a thousand arrives with a wrong bit, by this seed. bench/noisy_lines.py does it at
/// length.
class NoisyLine : public ::testing::TestWithParam<int> {};

TEST_P(NoisyLine, VerifiedDownloadIsCompleteAndEqualToTheRing)
{
    SimulatedBus bus({"--fast", "--seed", QString::number(GetParam()), "--clock", "2024-05-17T09:05:30",
                      "--readout", "5:A", "--ring", "5:1000,10,30"});
    const QTemporaryDir folder;
    const auto path = folder.filePath("noisy.csv");
    bus.command(QStringLiteral("biterrors 0.001,%1").arg(GetParam()));
    const auto run = runProgram("quorvelctl", {"--no-journal", "--port", bus.device(), "--address", "5",
                                               "download", path, "--retries", "3", "--verify"});
    const auto counts = bus.command("biterrors");
    EXPECT_GT(
        counts["toReadouts"].toObject()["hit"].toInt() + counts["fromReadouts"].toObject()["hit"].toInt(), 0);
    EXPECT_EQ(run.status, 0) << qPrintable(run.err);
    EXPECT_EQ(linesIn(path), expectedLines(bus));
}

INSTANTIATE_TEST_SUITE_P(Seeds, NoisyLine, ::testing::Values(1, 2, 3), ::testing::PrintToStringParamName());

} // namespace
} // namespace quorvel::test
