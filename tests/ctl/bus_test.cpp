#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

/// `quorvelctl` before a simulated bus with readouts 5 (type A) and 12 (type C).
class Quorvelctl : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments, const QString& program = QStringLiteral("quorvelctl"))
    {
        return runProgram(program, QStringList({"--port", bus.device()}) + arguments);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C"}};
};

TEST_F(Quorvelctl, SearchListsTheAddresses)
{
    const auto found = run({"search"});
    EXPECT_EQ(found.status, 0) << qPrintable(found.err);
    EXPECT_EQ(found.out, "05\n12\n");
    EXPECT_EQ(run({"search", "--json"}).out, "{\"address\":5}\n{\"address\":12}\n");
}

TEST_F(Quorvelctl, SearchOfASilentBusSaysSo)
{
    bus.fault("silent@01");
    const auto found = run({"search"});
    EXPECT_EQ(found.status, 4);
    EXPECT_EQ(found.out, "");
    EXPECT_EQ(found.err, "No Sensors(or MCU) Found\n");
}

TEST_F(Quorvelctl, ReadPrintsTheValuesAsReceived)
{
    const auto read = run({"read", "--address", "5"});
    EXPECT_EQ(read.status, 0) << qPrintable(read.err);
    const QRegularExpression line(R"(^X: [+-][\d.]{7}  Y: [+-][\d.]{7}\n$)");
    EXPECT_TRUE(line.match(read.out).hasMatch()) << qPrintable(read.out);
}

TEST_F(Quorvelctl, ReadOfTheThreeDirectionTypeHasZ)
{
    const auto read = run({"--address", "12", "--type", "C", "read", "--json"});
    const auto object = QJsonDocument::fromJson(read.out.toUtf8()).object();
    EXPECT_EQ(object.value("address").toInt(), 12);
    for (const auto* name : {"x", "y", "z1"}) {
        const auto text = object.value(QLatin1String(name) + "Text").toString();
        EXPECT_EQ(text.size(), 8) << name << qPrintable(read.out);
        EXPECT_EQ(object.value(QLatin1String(name) + "Mm").toDouble(), text.toDouble()) << name;
    }
    EXPECT_TRUE(object.value("z2Mm").isNull()) << "which the factory's program shows alone";
    const auto factory = run({"--address", "12", "--type", "C", "read"}, "quorvelctl-factory");
    EXPECT_TRUE(factory.out.contains("Z1: ") && factory.out.contains("Z2: ")) << qPrintable(factory.out);
}

TEST_F(Quorvelctl, ASilentReadoutIsExitStatus4)
{
    const auto read = run({"read", "--address", "77"});
    EXPECT_EQ(read.status, 4);
    EXPECT_EQ(read.out, "");
    EXPECT_EQ(read.err, "readout 77 did not answer with the 29 characters of a reading.\n");
    const auto shown = run({"read", "--address", "77", "--progress"});
    EXPECT_EQ(shown.err, read.err + "Next step: quorvelctl --address 77 diagnose tests step by step why.\n")
        << "for a person";
    EXPECT_EQ(run({"read", "--address", "77", "--progress", "--quiet"}).err, read.err);
}

TEST_F(Quorvelctl, WatchTakesReadingsAtTheTurnOfTheSecond)
{
    const auto watched = run({"watch", "--address", "5", "--every", "1", "--count", "3"});
    EXPECT_EQ(watched.status, 0) << qPrintable(watched.err);
    ASSERT_EQ(watched.lines().size(), 3) << qPrintable(watched.out);
    const QRegularExpression line(R"(^\d\d:\d\d:\d\d  X: [+-][\d.]{7}  Y: [+-][\d.]{7}$)");
    for (const auto& text : watched.lines()) {
        EXPECT_TRUE(line.match(text).hasMatch()) << qPrintable(text);
    }
}

TEST_F(Quorvelctl, WatchGoesOnAfterAReadingThatFailed)
{
    bus.fault("silent@2101:1");
    const auto watched = run({"watch", "--address", "5", "--every", "2", "--count", "2"});
    EXPECT_EQ(watched.status, 4);
    EXPECT_EQ(watched.lines().size(), 1) << qPrintable(watched.out);
    EXPECT_TRUE(watched.err.contains("did not answer")) << qPrintable(watched.err);
}

TEST_F(Quorvelctl, TraceHoldsEveryFrameAndItsAnswer)
{
    const QTemporaryDir folder;
    const auto path = folder.filePath("a.jsonl");
    EXPECT_EQ(run({"--trace", path, "read", "--address", "5"}).status, 0);
    EXPECT_EQ(run({"--trace", path, "offset", "X", "--address", "7"}).status, 4);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QStringList told;
    while (!file.atEnd()) {
        const auto line = QJsonDocument::fromJson(file.readLine());
        told << line["meaning"].toString() + ": " + line["outcome"].toString();
    }
    EXPECT_EQ(told, QStringList({"Read X and Y: ", "Read X and Y: complete",
                                 "Read the offset of X: ", "Read the offset of X: silent"}));
}

TEST_F(Quorvelctl, TraceThatCannotBeWrittenIsExitStatus1)
{
    const auto read = run({"--trace", "/nowhere/a.jsonl", "read", "--address", "5"});
    EXPECT_EQ(read.status, 1);
    EXPECT_TRUE(read.err.startsWith("The traffic cannot be recorded to /nowhere/a.jsonl: "))
        << qPrintable(read.err);
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(Quorvelctl, StatsAreCsvOnStderr)
{
    const auto read = run({"--stats", "read", "--address", "12"});
    const auto rows = read.err.split('\n');
    ASSERT_EQ(rows.size(), 3) << qPrintable(read.err);
    EXPECT_TRUE(rows[0].startsWith("address,exchanges,complete,"));
    EXPECT_TRUE(rows[1].startsWith("12,1,1,0,0,0,")) << qPrintable(rows[1]);
    EXPECT_FALSE(read.out.contains("address"));
}

TEST_F(Quorvelctl, ReadOnlySendsNothingThatWouldChangeAReadout)
{
    const QString refused("Read Only is on: nothing was sent.");
    for (const auto& arguments : {QStringList{"offset", "X", "1.5"},
                                  {"clear", "--yes"},
                                  {"reset", "--yes"},
                                  {"address", "7"},
                                  {"auto", "1m"}}) {
        const auto ended = run(QStringList{"--read-only", "--address", "5"} + arguments);
        EXPECT_EQ(ended.status, 6) << qPrintable(arguments.join(' '));
        EXPECT_TRUE(ended.err.contains(refused)) << qPrintable(ended.err);
    }
    EXPECT_TRUE(bus.frames().isEmpty()) << qPrintable(bus.frames().join(' '));
    EXPECT_EQ(run({"--read-only", "read", "--address", "5"}).status, 0);
}

TEST_F(Quorvelctl, WhatIsSetIsBookedUnlessItIsSwitchedOff)
{
    const QTemporaryDir data;
    const auto before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    run({"--no-journal", "offset", "X", "1.5", "--address", "5"});
    EXPECT_FALSE(QFile::exists(data.filePath("quorvel/journal.jsonl")));
    run({"offset", "X", "2.5", "--address", "5"});
    qputenv("XDG_DATA_HOME", before);
    QFile file(data.filePath("quorvel/journal.jsonl"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto line = QJsonDocument::fromJson(file.readLine());
    EXPECT_EQ(line["meaning"], "Set the offset of X to +2.50000");
    EXPECT_EQ(line["program"], "quorvelctl");
    EXPECT_EQ(line["port"], bus.device());
    EXPECT_TRUE(file.atEnd());
}

TEST_F(Quorvelctl, WrongUsageIsExitStatus2)
{
    for (const auto& arguments : {QStringList{},
                                  {"read"},
                                  {"read", "--address", "0"},
                                  {"read", "--address", "250"},
                                  {"read", "--address", "5x"},
                                  {"fly"},
                                  {"watch", "--address", "5", "--every", "0"},
                                  {"read", "--address", "5", "--type", "E"}}) {
        const auto ended = run(arguments);
        EXPECT_EQ(ended.status, 2) << qPrintable(arguments.join(' '));
        EXPECT_FALSE(ended.err.isEmpty());
        EXPECT_EQ(ended.out, "");
    }
}

TEST_F(Quorvelctl, PortsListsTheNamedPortFirst)
{
    const auto ports = run({"ports"});
    EXPECT_EQ(ports.status, 0);
    EXPECT_EQ(ports.lines().value(0), "COM1 " + bus.device());
    const auto first = run({"ports", "--json"}).lines().value(0);
    EXPECT_EQ(first, QStringLiteral(R"({"port":"%1","text":"COM1 %1"})").arg(bus.device()));
}

TEST(QuorvelctlWithoutBus, NamesAMissingPort)
{
    const auto ended = runProgram("quorvelctl", {"--port", "/dev/ttyNowhere", "search"});
    EXPECT_EQ(ended.status, 3);
    EXPECT_TRUE(ended.err.contains("/dev/ttyNowhere does not exist")) << qPrintable(ended.err);
}

TEST(QuorvelctlWithoutBus, ReachesABusByTcp)
{
    const SimulatedBus bus({"--fast", "--tcp", "127.0.0.1:0", "--readout", "5:A"});
    EXPECT_TRUE(bus.device().startsWith("tcp:"));
    const auto found = runProgram("quorvelctl", {"--port", bus.device(), "search"});
    EXPECT_EQ(found.out, "05\n") << qPrintable(found.err);
}

} // namespace
} // namespace quorvel::test
