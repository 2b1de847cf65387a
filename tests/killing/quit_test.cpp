#include "autoread/exported.h"
#include "calibration/database.h"
#include "calibration/datacontrol.h"
#include "calibration/records.h"
#include "killing/worked_program.h"
#include "support/simulated_bus.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gmock/gmock.h>

#include <csignal>

namespace quorvel::test {
namespace {

constexpr int kPatience = 20'000; // ms

/// Something that takes more than one exchange, and how it is begun.
struct Work {
    const char* name;
    int address;
    const char* begins;  ///< the frame, or its beginning, that says that it has begun
    QStringList hands;   ///< in the window
    QStringList command; ///< of the command line
};

const Work kReference{"Reference",
                      5,
                      ":0571+0.00000FF",
                      {"trigger OS", "type Text2 10", "click Command4"},
                      {"reference", "X", "10"}};
const Work kReset{"Reset", 5, ":0567", {"trigger ResetSetting", "accept", "accept"}, {"reset", "--yes"}};
const Work kTables{"CalibrationDownload",
                   33,
                   ":21780111",
                   {"click Option3", "trigger ZD", "click Command1"},
                   {"calibrate", "Z", "download"}};

class Interrupted : public ::testing::TestWithParam<Work> {
protected:
    Interrupted()
    {
        bus.command("set 5 offsetx +0.25000");
        bus.command("set 5 diameter 25");
        const auto file = folder.filePath("ZDirection.mdb").toStdString();
        EXPECT_TRUE(calibration::CreateCalibrationDatabase(file));
        calibration::DataControl data;
        data.setDatabaseName(file);
        EXPECT_TRUE(data.Refresh());
        for (int row = 0; row < data.rowCount(); ++row)
            EXPECT_TRUE(
                data.write(row, {{"Rule_Data", row}, {"Z1_Data", row + 0.5}, {"Z2_Data", row + 0.25}}));
        data.Close();
        calibrationFile = contents(file);
        qputenv("XDG_DATA_HOME", folder.path().toLocal8Bit());
    }

    /// Waits until its first frame has come.
    bool hasBegun()
    {
        return QTest::qWaitFor(
            [this] {
                frames += bus.frames();
                return frames.join(' ').contains(GetParam().begins);
            },
            kPatience);
    }
    /// Everything was done, to its end.
    void expectDone()
    {
        const auto state = bus.state(GetParam().address);
        if (GetParam().name == std::string("Reference")) {
            EXPECT_NE(state["offsets"].toObject()["X"].toString(), "+0.00000");
            EXPECT_NE(state["offsets"].toObject()["X"].toString(), "+0.25000");
        } else if (GetParam().name == std::string("Reset")) {
            EXPECT_EQ(state["wire"].toObject()["diameter"].toDouble(), 1.5);
            EXPECT_EQ(state["offsets"].toObject()["X"].toString(), "+0.00000");
            EXPECT_EQ(state["ring"].toObject()["stored"].toInt(), 0) << "the last step deletes the records";
        } else {
            const auto tables = state["calibration"].toObject();
            for (const auto* sensor : {"Z1", "Z2"})
                EXPECT_EQ(tables[sensor].toArray().size(), 11) << sensor;
        }
    }
    /// No file is damaged, what is booked can be read, and the readout answers as before.
    void expectNoHarm()
    {
        EXPECT_EQ(contents(folder.filePath("ZDirection.mdb").toStdString()), calibrationFile);
        const auto journal = folder.filePath("quorvel/journal.jsonl");
        if (QFile::exists(journal)) {
            for (const auto& line : linesOf(contents(journal.toStdString())))
                EXPECT_FALSE(QJsonDocument::fromJson(QByteArray::fromStdString(line)).isNull()) << line;
        }
        const auto asked = runProgram("quorvelctl", {"--port", bus.device(), "--address",
                                                     QString::number(GetParam().address), "offset", "X"});
        EXPECT_EQ(asked.status, 0) << qPrintable(asked.err);
        EXPECT_EQ(asked.out.trimmed(), bus.state(GetParam().address)["offsets"].toObject()["X"].toString());
    }
    void startCommand()
    {
        auto arguments =
            QStringList{"--port", bus.device(), "--address", QString::number(GetParam().address)} +
            GetParam().command;
        if (arguments.contains("calibrate")) arguments += {"--folder", folder.path()};
        command.setStandardInputFile(QProcess::nullDevice());
        command.start(programPath("quorvelctl-factory"), arguments);
        ASSERT_TRUE(command.waitForStarted(kPatience));
    }
    void startWork(WorkedProgram& program)
    {
        program.openPort(GetParam().address);
        program.work(GetParam().hands);
    }
    SimulatedBus bus{
        {"--fast", "--seed", "1", "--readout", "5:A", "--readout", "33:C", "--ring", "5:1000,0,5"}};
    QTemporaryDir folder;
    std::string calibrationFile;
    QStringList frames;
    QProcess command;
};

TEST_P(Interrupted, IsFinishedByTheWindowThatIsAskedToEnd)
{
    WorkedProgram program("quorvel-factory", bus.device(), folder.path());
    startWork(program);
    ASSERT_TRUE(hasBegun()) << qPrintable(program.shown());
    program.terminate();
    // with the boxes that say how it went, which nobody answers
    EXPECT_EQ(program.ended(), 0) << qPrintable(program.shown() + program.errors());
    expectDone();
    expectNoHarm();
}

TEST_P(Interrupted, IsFinishedByTheCommandThatIsAskedToEnd)
{
    startCommand();
    ASSERT_TRUE(hasBegun());
    command.terminate();
    ASSERT_TRUE(command.waitForFinished(kPatience));
    EXPECT_EQ(command.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(command.exitCode(), 128 + SIGTERM);
    expectDone();
    expectNoHarm();
}

TEST_P(Interrupted, LeavesNoDamageWhenTheWindowIsKilled)
{
    WorkedProgram program("quorvel-factory", bus.device(), folder.path());
    startWork(program);
    ASSERT_TRUE(hasBegun()) << qPrintable(program.shown());
    QThread::msleep(QRandomGenerator::global()->bounded(300U));
    program.kill();
    expectNoHarm();
}

TEST_P(Interrupted, LeavesNoDamageWhenTheCommandIsKilled)
{
    startCommand();
    ASSERT_TRUE(hasBegun());
    QThread::msleep(QRandomGenerator::global()->bounded(300U));
    command.kill();
    ASSERT_TRUE(command.waitForFinished(kPatience));
    const auto told = QString::fromUtf8(command.readAllStandardError());
    if (GetParam().name == std::string("Reference")) {
        EXPECT_TRUE(told.startsWith("The offset was +0.25000.\n")) << qPrintable(told);
    }
    expectNoHarm();
}

INSTANTIATE_TEST_SUITE_P(Work, Interrupted, ::testing::Values(kReference, kReset, kTables),
                         [](const auto& work) { return std::string(work.param.name); });

/// "Quit" of the main window, which a reset leaves enabled, ends the program at once.
class QuitDuringReset : public Interrupted {};

TEST_P(QuitDuringReset, SendsNothingMoreAndLeavesTheStepsBefore)
{
    WorkedProgram program("quorvel", bus.device(), folder.path());
    startWork(program);
    ASSERT_TRUE(hasBegun()) << qPrintable(program.shown());
    program.work({"trigger Quit"});
    EXPECT_EQ(program.ended(), 0) << qPrintable(program.shown() + program.errors());
    const auto state = bus.state(5);
    EXPECT_EQ(state["wire"].toObject()["diameter"].toDouble(), 1.5);
    EXPECT_EQ(state["ring"].toObject()["stored"].toInt(), 5) << "the last step deletes the records";
    expectNoHarm();
}

INSTANTIATE_TEST_SUITE_P(Work, QuitDuringReset, ::testing::Values(kReset),
                         [](const auto& work) { return std::string(work.param.name); });

TEST(InterruptedDownload, OfTheWindowKeepsWhatItHasShown)
{
    SimulatedBus bus({"--fast", "--seed", "1", "--readout", "5:A", "--ring", "5:1000,0,900"});
    const QTemporaryDir folder;
    const auto file = folder.filePath("a.csv");
    WorkedProgram program("quorvel", bus.device(), folder.path());
    program.openPort(5);
    program.download(file);
    ASSERT_TRUE(program.shows(" 3 records have been received.")) << qPrintable(program.shown());
    program.terminate();
    EXPECT_EQ(program.ended(), 0);
    const auto shown =
        program.shown().section(" records have been received.", -2, -2).section(' ', -1).toInt();
    const auto table = contents(file.toStdString());
    EXPECT_TRUE(table.ends_with('\n'));
    EXPECT_GE(shown, 3);
    EXPECT_GE(rowsIn(table), shown);
    EXPECT_LE(rowsIn(table), shown + 1);
}

} // namespace
} // namespace quorvel::test
