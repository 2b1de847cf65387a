#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvel::test {
namespace {

/// `quorvelctl-factory` before a simulated bus with readouts 5 (type A) and 33 (type C), and a folder of files.
class QuorvelctlCalibration : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments, const QString& address = "5")
    {
        return runProgram("quorvelctl-factory",
                          QStringList({"--port", bus.device(), "--address", address}) + arguments);
    }
    ProgramRun calibrate(const QString& direction, const QStringList& arguments, const QString& address = "5")
    {
        return run(QStringList({"calibrate", direction, "--folder", folder.path()}) + arguments, address);
    }
    /// Measures all points with the wire at 10, 10.5, 11 ... mm, the dial at 0, 0.25, 0.5 ...
    void measureAll(const QString& direction, const QString& address, const QStringList& sensors)
    {
        for (int point = 0; point < 11; ++point) {
            for (const auto& sensor : sensors) {
                bus.command(QStringLiteral("set %1 %2 %3").arg(address, sensor).arg(10 + 0.5 * point));
            }
            const auto measured = calibrate(
                direction,
                {"measure", "--point", QString::number(point), "--dial", QString::number(0.25 * point)},
                address);
            ASSERT_EQ(measured.status, 0) << qPrintable(measured.err);
        }
    }
    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "33:C"}};
    QTemporaryDir folder;
};

TEST_F(QuorvelctlCalibration, CalibratesXFromFirstPointToDownload)
{
    measureAll("X", "5", {"x"});
    const auto shown = calibrate("X", {}).lines();
    ASSERT_EQ(shown.size(), 11);
    EXPECT_EQ(shown[0], "0\t0\t10");
    EXPECT_EQ(shown[9], "9\t2.25\t14.5");

    const auto fit = calibrate("X", {"fit"});
    EXPECT_EQ(fit.status, 0);
    EXPECT_EQ(fit.out, "X: Y=2.0000*X+(10.000)\nNonlinear Error: 0.000, Max Error: 0.000\n");

    bus.frames();
    const auto download = calibrate("X", {"download"});
    EXPECT_EQ(download.status, 0) << qPrintable(download.err);
    EXPECT_EQ(download.out, "X向标定参数下载完毕！\n");
    const auto frames = bus.frames();
    ASSERT_EQ(frames.size(), 1);
    EXPECT_TRUE(frames[0].startsWith(":056111+010.000+000.000+010.500+000.250")) << qPrintable(frames[0]);
    EXPECT_NEAR(bus.state(5)["reading"].toObject()["X"].toDouble(), 2.5, 0.001) << "the readout corrects now";
}

TEST_F(QuorvelctlCalibration, CalibratesBothSensorsOfZ)
{
    measureAll("Z", "33", {"z1", "z2"});
    const auto shown = calibrate("Z", {"--json"}).lines();
    ASSERT_EQ(shown.size(), 11);
    EXPECT_EQ(shown[1], R"({"dialMm":0.25,"direction":"Z","point":1,"z1Mm":10.5,"z2Mm":10.5})");
    const auto fit = calibrate("Z", {"fit", "--json"}).lines();
    ASSERT_EQ(fit.size(), 2);
    const auto second = QJsonDocument::fromJson(fit[1].toUtf8()).object();
    EXPECT_EQ(second["column"].toString(), "Z2_Data");
    EXPECT_EQ(second["slope"].toDouble(), 2);
    EXPECT_EQ(second["interceptMm"].toDouble(), 10);
    EXPECT_EQ(calibrate("Z", {"download"}, "33").out, "Z1向标定参数下载完毕！\nZ2向标定参数下载完毕！\n");
}

TEST_F(QuorvelctlCalibration, MeasuringCreatesTheFileAndKeepsADialReadingThatIsNotGiven)
{
    EXPECT_EQ(calibrate("Y", {}).status, 1);
    EXPECT_FALSE(QFile::exists(file("YDirection.mdb"))) << "looking creates nothing";
    bus.command("set 5 y 1.5");
    EXPECT_EQ(calibrate("Y", {"measure", "--point", "3", "--dial", "0.75"}).out, "3\t0.75\t1.5\n");
    bus.command("set 5 y 2.5");
    EXPECT_EQ(calibrate("Y", {"measure", "--point", "3"}).out, "3\t0.75\t2.5\n");
    EXPECT_EQ(calibrate("Y", {}).lines()[10], "10\t-\t-");
}

TEST_F(QuorvelctlCalibration, MeasurementThatFailsChangesNothing)
{
    struct Row {
        const char* fault;
        const char* told;
        int status;
    };
    calibrate("X", {"measure", "--point", "0", "--dial", "0.5"});
    const auto before = calibrate("X", {}).out;
    for (const auto& [fault, told, status] :
         {Row{"silent@2101", "Nothing was measured: the readout did not answer.\n", 4},
          Row{"short@2101", "Nothing was measured: 28 characters came instead of 27 or 29.\n", 5},
          Row{"badnumber@2101", "is not a reading for a column X_Data", 5},
          Row{"hangup@2101", "is gone", 3}}) {
        bus.clearFaults();
        bus.fault(fault);
        const auto measured = calibrate("X", {"measure", "--point", "0", "--dial", "9"});
        EXPECT_EQ(measured.status, status) << fault;
        EXPECT_EQ(measured.out, "") << fault;
        EXPECT_TRUE(measured.err.contains(told)) << qPrintable(measured.err);
        EXPECT_EQ(calibrate("X", {}).out, before) << fault;
    }
}

TEST_F(QuorvelctlCalibration, PointOrNumberThatIsNoneIsToldWithoutAsking)
{
    EXPECT_EQ(calibrate("X", {"measure", "--point", "0", "--dial", "1,5"}).status, 2);
    const auto eleventh = calibrate("X", {"measure", "--point", "11"});
    EXPECT_EQ(eleventh.status, 1);
    EXPECT_EQ(eleventh.err, "The file has no point 11.\n");
    EXPECT_NE(calibrate("W", {}).status, 0);
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(QuorvelctlCalibration, PointsThatAreMissingAreNeitherFittedNorSent)
{
    calibrate("X", {"measure", "--point", "0", "--dial", "0.5"});
    bus.frames();
    for (const auto* command : {"fit", "download"}) {
        const auto done = calibrate("X", {command});
        EXPECT_EQ(done.status, 1) << command;
        EXPECT_EQ(done.err, "Some Data is empty, Please check!\n") << command;
    }
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(QuorvelctlCalibration, DownloadThatIsNotRepeatedIsExitStatus5)
{
    measureAll("X", "5", {"x"});
    bus.fault("echo@6111");
    const auto other = calibrate("X", {"download"});
    EXPECT_EQ(other.status, 5);
    EXPECT_EQ(other.err, "X向标定参数下载失败！\n");
    bus.clearFaults();
    bus.fault("long@6111");
    const auto longer = calibrate("X", {"download"});
    EXPECT_EQ(longer.status, 5);
    EXPECT_EQ(longer.err, "X_Data: no complete echo, 188 characters came instead of 187.\n");
}

TEST_F(QuorvelctlCalibration, DownloadEndsWithAnAdapterThatIsPulled)
{
    measureAll("Z", "33", {"z1", "z2"});
    bus.fault("hangup@780111");
    const auto download = calibrate("Z", {"download"}, "33");
    EXPECT_EQ(download.status, 3);
    EXPECT_EQ(download.out, "");
    EXPECT_TRUE(download.err.contains("is gone")) << qPrintable(download.err);
    EXPECT_EQ(download.err.count('\n'), 1) << "one reason for all: " << qPrintable(download.err);
}

TEST_F(QuorvelctlCalibration, FileThatCannotBeLookedAtIsTold)
{
    std::filesystem::create_symlink("XDirection.mdb", file("XDirection.mdb").toStdString());
    const auto measured = calibrate("X", {"measure", "--point", "0"});
    EXPECT_EQ(measured.status, 1);
    EXPECT_TRUE(measured.err.contains("XDirection.mdb could not be opened")) << qPrintable(measured.err);
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(QuorvelctlCalibration, QueriesAndSetsTheStitchingLocation)
{
    bus.command("set 33 stitching 0512");
    EXPECT_EQ(run({"stitching"}, "33").out, "0512\n");
    const auto set = run({"stitching", "1234"}, "33");
    EXPECT_EQ(set.status, 0) << qPrintable(set.err);
    EXPECT_EQ(set.out, "1234\n");
    EXPECT_EQ(set.err, "SetOK!\n");
    EXPECT_EQ(run({"stitching", "--json"}, "33").out, "{\"address\":33,\"location\":\"1234\"}\n");
    EXPECT_EQ(bus.frames(), (QStringList{":217822FF", ":2178211234FF", ":217822FF"}));
}

TEST_F(QuorvelctlCalibration, StitchingLocationOfAnotherLengthIsNotSent)
{
    for (const auto* typed : {"123", "12345", ""}) {
        const auto set = run({"stitching", typed}, "33");
        EXPECT_EQ(set.status, 2) << typed;
        EXPECT_EQ(set.err, "Location input error, pls input 4 numbers\n") << typed;
    }
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(QuorvelctlCalibration, StitchingThatIsNotConfirmedOrNotAnsweredIsToldApart)
{
    bus.fault("echo@7821");
    const auto other = run({"stitching", "1234"}, "33");
    EXPECT_EQ(other.status, 5);
    EXPECT_EQ(other.err, "The readout repeated something else.\n");
    bus.clearFaults();
    bus.fault("silent@7822");
    const auto silent = run({"stitching"}, "33");
    EXPECT_EQ(silent.status, 4);
    EXPECT_EQ(silent.err, "Comm Error The readout did not answer.\n");
}

TEST_F(QuorvelctlCalibration, IsNoPartOfTheUserEdition)
{
    for (const QStringList& arguments : {QStringList{"calibrate", "X"}, {"stitching"}}) {
        const auto refused =
            runProgram("quorvelctl", QStringList({"--port", bus.device(), "--address", "33"}) + arguments);
        EXPECT_EQ(refused.status, 2) << qPrintable(arguments[0]);
        EXPECT_EQ(refused.out, "") << qPrintable(arguments[0]);
    }
    EXPECT_TRUE(bus.frames().isEmpty());
    for (const auto* command : {"\n  calibrate ", "\n  stitching "}) {
        EXPECT_FALSE(runProgram("quorvelctl", {"--help"}).out.contains(command)) << command;
        EXPECT_TRUE(runProgram("quorvelctl-factory", {"--help"}).out.contains(command)) << command;
    }
}

TEST_F(QuorvelctlCalibration, RecordIsWrittenAsItsEndingSays)
{
    EXPECT_EQ(calibrate("X", {"record", file("r.pdf")}).status, 1) << "there is nothing to record";
    measureAll("X", "5", {"x"});
    ASSERT_EQ(calibrate("X", {"download"}).status, 0);
    for (const auto& [name, begin] : {std::pair("r.pdf", "%PDF-"), std::pair("r.html", "<!DOCTYPE html>"),
                                      std::pair("r.png", "\x89PNG"), std::pair("r.json", "{")}) {
        const auto written = calibrate("X", {"record", file(name)});
        EXPECT_EQ(written.status, 0) << qPrintable(written.err);
        EXPECT_EQ(written.out, file(name) + "\n");
        QFile record(file(name));
        ASSERT_TRUE(record.open(QIODevice::ReadOnly));
        EXPECT_TRUE(record.readAll().startsWith(begin)) << name;
    }
    EXPECT_EQ(calibrate("X", {"record", file("r.json")}).status, 6) << "it exists";
    EXPECT_EQ(calibrate("X", {"record", file("r.json"), "--force"}).status, 0);
    EXPECT_EQ(calibrate("X", {"record", file("r.doc")}).status, 2);

    QFile archive(file("r.json"));
    ASSERT_TRUE(archive.open(QIODevice::ReadOnly));
    const auto json = QJsonDocument::fromJson(archive.readAll()).object();
    EXPECT_EQ(json["readout"].toObject()["address"].toInt(), 5);
    EXPECT_EQ(json["downloads"].toArray()[0].toObject()["verdict"].toString(), "agrees");
    EXPECT_EQ(json["judgement"]
                  .toObject()["measured"]
                  .toObject()["columns"]
                  .toArray()[0]
                  .toObject()["line"]
                  .toObject()["slope"]
                  .toDouble(),
              2);
}

TEST_F(QuorvelctlCalibration, PointsOfAnotherReadoutAreSentOnlyWithAYes)
{
    measureAll("X", "5", {"x"});
    bus.frames();
    const auto refused = calibrate("X", {"download"}, "33");
    EXPECT_EQ(refused.status, 6);
    EXPECT_TRUE(refused.err.contains("The points were measured at readout 5, the address is 33"))
        << qPrintable(refused.err);
    EXPECT_TRUE(bus.frames().isEmpty());
    EXPECT_EQ(calibrate("X", {"download", "--yes"}, "33").status, 0);
}

} // namespace
} // namespace quorvel::test
