#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

/// `quorvelctl` before a simulated bus with readouts 5 (type A), 12 (type B) and 33 (type C).
class QuorvelctlSettings : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments)
    {
        return runProgram("quorvelctl", QStringList({"--port", bus.device()}) + arguments);
    }
    /// On the readout of type C.
    ProgramRun runC(const QStringList& arguments)
    {
        return run(QStringList({"--address", "33", "--type", "C"}) + arguments);
    }
    QJsonObject state(const QString& part) { return bus.state(33).value(part).toObject(); }
    QString path(const QString& name) const { return folder.filePath(name); }
    QJsonObject saved(const QString& name)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
        return QJsonDocument::fromJson(file.readAll()).object();
    }
    void write(const QString& name, const QByteArray& text)
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QTemporaryDir folder;
    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:B", "--readout", "33:C"}};
};

TEST_F(QuorvelctlSettings, EverySettingIsPrinted)
{
    bus.command("set 12 clock 2031-02-03T04:05:06");
    const auto printed = run({"settings", "--address", "12", "--type", "B"});
    EXPECT_EQ(printed.status, 0) << qPrintable(printed.err);
    EXPECT_EQ(printed.out.section("clock", 0, 0),
              "wire              diameterMm 1.5, permittedErrorMm 0.3, selfCalibration on\n"
              "offsetX           +0.00000\n"
              "offsetY           +0.00000\n"
              "referenceFeature  off\n"
              "invertX           off\n"
              "invertY           off\n"
              "swap              off\n");
    EXPECT_TRUE(printed.out.contains("clock             2031-02-03T04:05:"));
    EXPECT_TRUE(printed.out.endsWith("autoReading       hours 1, minutes 0, mode interval, seconds 0\n"
                                     "stitching         3665\n"))
        << qPrintable(printed.out);
}

TEST_F(QuorvelctlSettings, JsonHoldsTheSame)
{
    bus.command("set 33 fixed 8 12 16 20");
    const auto printed = runC({"settings", "--json"});
    const auto object = QJsonDocument::fromJson(printed.out.toUtf8()).object();
    const auto settings = object.value("settings").toObject();
    EXPECT_EQ(object.value("address").toInt(), 33);
    EXPECT_EQ(settings.value("offsetZ").toString(), "+0.00000");
    EXPECT_EQ(settings.value("invertZ"), QJsonValue(false));
    EXPECT_EQ(settings.value("autoReading").toObject().value("hoursOfDay").toArray(),
              QJsonArray({8, 12, 16, 20}));
    EXPECT_FALSE(settings.contains("stitching"));
}

TEST_F(QuorvelctlSettings, WhatWasSavedComesBackAfterAReset)
{
    for (const auto* setting :
         {"diameter 25", "error 9", "selfcalibration off", "reference on", "offsetx +1.00000",
          "offsety -12.5000", "offsetz +100.000", "invertx on", "inverty on", "swap on", "interval 0 5 0"})
        bus.command(QString("set 33 ") + setting);
    const auto save = runC({"settings", "save", path("a.json")});
    EXPECT_EQ(save.status, 0) << qPrintable(save.err);
    EXPECT_EQ(runC({"reset", "--yes"}).out, "Reset OK!\n");
    EXPECT_EQ(state("offsets").value("X").toString(), "+0.00000");

    const auto restore = runC({"settings", "restore", path("a.json"), "--yes"});
    EXPECT_EQ(restore.status, 0) << qPrintable(restore.err);
    EXPECT_EQ(restore.lines().size(), 11) << qPrintable(restore.out);
    EXPECT_EQ(restore.out.count("verified"), 10) << qPrintable(restore.out);
    EXPECT_TRUE(restore.out.contains("clock: left as it is")) << qPrintable(restore.out);
    EXPECT_EQ(state("offsets").value("X").toString(), "+1.00000");
    EXPECT_EQ(state("offsets").value("Y").toString(), "-12.5000");
    EXPECT_EQ(state("offsets").value("Z").toString(), "+100.000");
    EXPECT_EQ(state("wire").value("diameter").toDouble(), 2.5);
    EXPECT_FALSE(state("wire").value("selfCalibration").toBool());
    EXPECT_TRUE(state("switches").value("swap").toBool());
    EXPECT_FALSE(state("switches").value("invertZ").toBool());
    EXPECT_EQ(state("auto").value("values").toArray().at(1).toInt(), 5);
}

TEST_F(QuorvelctlSettings, ExistingFileIsOnlyOverwrittenWhenAsked)
{
    write("a.json", "precious");
    EXPECT_EQ(runC({"settings", "save", path("a.json")}).status, 2);
    EXPECT_TRUE(saved("a.json").isEmpty());
    EXPECT_EQ(runC({"settings", "save", path("a.json"), "--yes"}).status, 0);
    EXPECT_EQ(saved("a.json").value("format").toString(), "quorvel-settings");
}

TEST_F(QuorvelctlSettings, NothingIsSavedWhenASettingCannotBeRead)
{
    struct {
        const char* command;
        const char* setting;
    } const rows[] = {{"68", "wire"},       {"72", "offsetX"}, {"76", "referenceFeature"},
                      {"7704", "invertX"},  {"7702", "swap"},  {"06", "autoReading"},
                      {"7822", "stitching"}};
    for (const auto& row : rows) {
        bus.clearFaults();
        bus.fault(QString("garbled@") + row.command);
        const auto save = run({"--address", "12", "--type", "B", "settings", "save", path("a.json")});
        EXPECT_EQ(save.status, 1) << row.setting;
        EXPECT_FALSE(QFile::exists(path("a.json"))) << row.setting;
        EXPECT_TRUE(save.err.contains(QString(row.setting) + ": not read.")) << qPrintable(save.err);
        EXPECT_TRUE(save.err.endsWith("Nothing was saved.\n")) << qPrintable(save.err);
    }
}

TEST_F(QuorvelctlSettings, SilentReadoutIsGivenUpAtOnce)
{
    const auto printed = run({"settings", "--address", "77"});
    EXPECT_EQ(printed.status, 1);
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "Comm Error The readout did not answer.\nwire: not read.\n");
}

TEST_F(QuorvelctlSettings, RestoreAsksFirst)
{
    write("a.json", R"({"format":"quorvel-settings","settings":{"swap":true}})");
    const auto restore = runC({"settings", "restore", path("a.json")});
    EXPECT_EQ(restore.status, 1);
    EXPECT_TRUE(restore.err.contains("Set 1 settings of readout 33?")) << qPrintable(restore.err);
    EXPECT_FALSE(state("switches").value("swap").toBool());
}

TEST_F(QuorvelctlSettings, ValueThatTheReadoutDoesNotKeepIsReported)
{
    write("a.json", R"({"format":"quorvel-settings","settings":{"offsetX":"+1.00000","swap":true}})");
    bus.command("reply 33 72 :2172+2.00000FF");
    const auto restore = runC({"settings", "restore", path("a.json"), "--yes"});
    EXPECT_EQ(restore.status, 1);
    EXPECT_EQ(restore.lines(), QStringList({"offsetX: the readout holds +2.00000 after +1.00000 was set",
                                            "swap: on, verified"}));
}

TEST_F(QuorvelctlSettings, WrongValuesInAFileAreNotSent)
{
    write("a.json", R"({"format":"quorvel-settings","settings":{
        "wire":{"diameterMm":123,"permittedErrorMm":0.3,"selfCalibration":true},
        "offsetX":"1.5", "offsetY":"+1.5000\n", "offsetZ":7, "invertX":"on", "invertY":1, "swap":null,
        "referenceFeature":[], "autoReading":{"mode":"interval","hours":100,"minutes":-1},
        "clock":"2031-02-03T04:05:06", "invertZ":{}, "stitching":"1234", "nonsense":1}})");
    const auto restore = runC({"settings", "restore", path("a.json"), "--yes"});
    EXPECT_EQ(restore.status, 1);
    EXPECT_TRUE(bus.frames().isEmpty());
    EXPECT_EQ(restore.out.count(": not set; "), 10) << qPrintable(restore.out);
    EXPECT_TRUE(restore.out.contains("offsetY: not set; +1.5000? is not a valid value\n"))
        << qPrintable(restore.out);
    EXPECT_TRUE(restore.out.contains("swap: not set; nothing is not a valid value\n"))
        << qPrintable(restore.out);
    EXPECT_EQ(restore.out.count("clock: left as it is; "), 1) << qPrintable(restore.out);
    EXPECT_TRUE(restore.err.contains("nonsense: a readout of type C has no such setting."));
    EXPECT_TRUE(restore.err.contains("stitching: a readout of type C has no such setting."));
}

TEST_F(QuorvelctlSettings, EachThingThatIsNotRestoredIsAFailureButClockAndFixedHours)
{
    struct {
        const char* settings;
        int status;
    } const rows[] = {{R"("swap":true)", 0},
                      {R"("clock":"2031-02-03T04:05:06")", 0},
                      {R"("autoReading":{"mode":"fixed","hoursOfDay":[8,12,16,20]})", 0},
                      {R"("swap":"on")", 1},
                      {R"("offsetX":"+123 456")", 1},
                      {R"("autoReading":{"mode":"never"})", 1},
                      {R"("stitching":"1234")", 1},
                      {R"("non\nsense":1)", 1}};
    for (const auto& row : rows) {
        write("a.json", QByteArray(R"({"format":"quorvel-settings","settings":{)") + row.settings + "}}");
        const auto restore = runC({"settings", "restore", path("a.json"), "--yes"});
        EXPECT_EQ(restore.status, row.status) << row.settings;
        EXPECT_FALSE(restore.err.contains("non\nsense"));
    }
}

TEST_F(QuorvelctlSettings, ClockThatShowsNoDateIsSavedAsReceived)
{
    bus.fault("baddate@04");
    const auto save = runC({"settings", "save", path("a.json")});
    EXPECT_EQ(save.status, 0) << qPrintable(save.err);
    const auto clock = saved("a.json").value("settings").toObject().value("clock").toString();
    EXPECT_TRUE(clock.startsWith("2024-13-32  ")) << qPrintable(clock);
    const auto restore = runC({"settings", "restore", path("a.json"), "--yes"});
    EXPECT_EQ(restore.status, 0) << qPrintable(restore.err);
}

TEST_F(QuorvelctlSettings, StitchingLocationWithABlankComesBack)
{
    const auto runB = [this](const QStringList& arguments) {
        return run(QStringList({"--address", "12", "--type", "B"}) + arguments);
    };
    bus.command("set 12 stitching 3 65");
    EXPECT_EQ(runB({"settings", "save", path("a.json")}).status, 0);
    bus.command("set 12 stitching 1234");
    const auto restore = runB({"settings", "restore", path("a.json"), "--yes"});
    EXPECT_EQ(restore.status, 0) << qPrintable(restore.out);
    EXPECT_EQ(bus.state(12).value("stitching").toString(), "3 65");
}

TEST_F(QuorvelctlSettings, FileThatHoldsNoSettingsIsRefused)
{
    const auto refused = [this](const QByteArray& text) {
        write("a.json", text);
        const auto restore = runC({"settings", "restore", path("a.json"), "--yes"});
        EXPECT_EQ(restore.status, 1) << text.constData();
        EXPECT_TRUE(restore.err.contains("a.json is not a settings file")) << qPrintable(restore.err);
    };
    refused("");
    refused("{\"format\":\"quor");
    refused("[1,2]");
    refused(R"({"format":"other","settings":{"swap":true}})");
    refused(R"({"format":"quorvel-settings","settings":{}})");
    EXPECT_EQ(runC({"settings", "restore", path("missing.json"), "--yes"}).status, 1);
}

TEST_F(QuorvelctlSettings, OffsetIsSetAndPrinted)
{
    const auto set = runC({"offset", "Z", "-1.5"});
    EXPECT_EQ(set.out, "-1.50000\n") << qPrintable(set.err);
    EXPECT_EQ(set.err, "Set OK!\n");
    EXPECT_EQ(runC({"offset", "Z", "--json"}).out, "{\"direction\":\"Z\",\"offset\":\"-1.50000\"}\n");
}

TEST_F(QuorvelctlSettings, ReferenceIsSetAndPrinted)
{
    bus.command("set 33 x 2.5");
    const auto set = runC({"reference", "X", "10"});
    EXPECT_EQ(set.out, "+7.50000\n");
    EXPECT_TRUE(
        set.err.contains("Set OK!The current value is +2.50000, the Internal Offset Value is +7.50000."))
        << qPrintable(set.err);
    EXPECT_EQ(runC({"reference", "X"}).out, "+7.50000  2.5\n");
}

TEST_F(QuorvelctlSettings, ReferenceHasNoNoise)
{
    bus.command("set 33 x 0.3");
    bus.command("set 33 offsetx +12.0000");
    EXPECT_EQ(runC({"reference", "X"}).out, "+12.0000  0.3\n");
    EXPECT_EQ(runC({"reference", "X", "--json"}).out,
              "{\"direction\":\"X\",\"offset\":\"+12.0000\",\"valueWithoutOffset\":0.3}\n");
}

TEST_F(QuorvelctlSettings, ReferenceWhoseOffsetIsTooLongIsWarnedOf)
{
    bus.command("set 33 x -2");
    const auto set = runC({"reference", "X", "999"});
    EXPECT_EQ(set.status, 1);
    EXPECT_EQ(set.err, "The offset was +0.00000.\n"
                       "Waiting 2 seconds for the readout to settle ...\n"
                       "The frame is longer than the readout expects: values between -1000 and 1000 fit.\n"
                       "Comm Error The readout did not answer.\n"
                       "The former offset was overwritten with zero and is lost.\n");
}

TEST_F(QuorvelctlSettings, AnswersThatHoldNoValueAreFailures)
{
    struct {
        QStringList arguments;
        const char* command;
        const char* answer; ///< \x1b is what would reach the terminal
    } const rows[] = {{{"offset", "X"}, "72", ":2172+1.\x1b[2JFF"},
                      {{"offset", "Z"}, "7806", ":217806~~~~~~~~FF"},
                      {{"reference", "X"}, "72", ":2172\x1b~~~~~~~FF"},
                      {{"reference", "X"}, "2101", ":212101\x1b~~~~~~~+1.0000000FF"},
                      {{"feature"}, "76", ":217602FF"},
                      {{"invert", "X"}, "7704", ":217704\x1b~FF"},
                      {{"wire"}, "68", ":21681503020000FF"},
                      {{"clock"}, "04", ":2104\x1b[2J~~~~~~~~FF"}};
    for (const auto& row : rows) {
        const auto name = row.arguments.join(' ') + ' ' + row.command;
        bus.command(QString("reply 33 %1 %2").arg(row.command, row.answer));
        const auto ended = runC(row.arguments);
        EXPECT_EQ(ended.status, 1) << qPrintable(name);
        EXPECT_EQ(ended.out, "") << qPrintable(name);
        EXPECT_FALSE(ended.err.isEmpty()) << qPrintable(name);
        EXPECT_FALSE(ended.err.contains('\x1b')) << qPrintable(name);
        bus.command(QString("reply 33 %1").arg(row.command));
    }
}

TEST_F(QuorvelctlSettings, PulledAdapterIsToldOnce)
{
    bus.fault("hangup@72");
    const auto ended = runC({"offset", "X"});
    EXPECT_EQ(ended.status, 1);
    ASSERT_EQ(ended.err.count('\n'), 2) << qPrintable(ended.err);
    EXPECT_TRUE(ended.err.startsWith(bus.device() + " is gone (")) << qPrintable(ended.err);
    EXPECT_TRUE(ended.err.endsWith("\nComm Error\n")) << qPrintable(ended.err);
}

TEST_F(QuorvelctlSettings, SwitchesAreSetAndPrinted)
{
    EXPECT_EQ(runC({"invert", "Y", "on"}).out, "on\n");
    EXPECT_EQ(runC({"invert", "Y"}).out, "on\n");
    EXPECT_EQ(runC({"swap", "on", "--json"}).out, "{\"swap\":true}\n");
    EXPECT_EQ(runC({"swap"}).out, "on\n");
    EXPECT_EQ(runC({"feature", "on"}).out, "on\n");
    EXPECT_EQ(runC({"feature"}).out, "on\n");
    EXPECT_TRUE(state("switches").value("invertY").toBool());
    EXPECT_TRUE(bus.state(33).value("reference").toBool());
}

TEST_F(QuorvelctlSettings, WireIsSetAndPrinted)
{
    const auto set = runC({"wire", "--diameter", "2.5", "--error", "0.4"});
    EXPECT_EQ(set.out, "Diameter and permitted Error is set as 2.5mm, 0.4mm\n") << qPrintable(set.err);
    EXPECT_EQ(runC({"wire", "--json"}).out, "{\"diameterMm\":2.5,\"permittedErrorMm\":0.4}\n");
}

TEST_F(QuorvelctlSettings, ClockIsSetAndPrinted)
{
    bus.command("set 33 clock 2031-02-03T04:05:06");
    EXPECT_TRUE(runC({"clock"}).out.startsWith("2031-02-03  04:05:0"));
    const auto set = runC({"clock", "--set"});
    EXPECT_TRUE(set.out.startsWith(QDate::currentDate().toString(Qt::ISODate))) << qPrintable(set.out);
}

TEST_F(QuorvelctlSettings, AddressIsChanged)
{
    EXPECT_EQ(runC({"address", "34"}).out, "34\n");
    EXPECT_EQ(bus.state(34).value("type").toString(), "C");
}

TEST_F(QuorvelctlSettings, FailuresAreExitStatus1)
{
    bus.fault("echo@7");
    const auto set = runC({"offset", "X", "1"});
    EXPECT_EQ(set.status, 1);
    EXPECT_EQ(set.out, "");
    EXPECT_TRUE(set.err.startsWith("Set Failed! The readout answered ")) << qPrintable(set.err);
    const auto reset = runC({"reset", "--yes"});
    EXPECT_EQ(reset.status, 1);
    EXPECT_TRUE(reset.err.contains("Reset Failed! At step 2 of 12 (reference feature off): "))
        << qPrintable(reset.err);
}

TEST_F(QuorvelctlSettings, WrongUsageIsExitStatus2)
{
    const QList<QStringList> wrong{{"offset"},
                                   {"offset", "W"},
                                   {"offset", "X", "abc"},
                                   {"offset", "X", "1000"},
                                   {"invert", "X", "yes"},
                                   {"wire", "--diameter", "1"},
                                   {"wire", "--diameter", "12.3", "--error", "1"},
                                   {"address"},
                                   {"address", "250"},
                                   {"address", "12.6"},
                                   {"address", "+34"},
                                   {"address", "33"},
                                   {"reset"},
                                   {"settings", "save"}};
    for (const auto& arguments : wrong)
        EXPECT_EQ(runC(arguments).status, 2) << qPrintable(arguments.join(' '));
    EXPECT_EQ(run({"--address", "5", "offset", "Z"}).status, 2);
    EXPECT_TRUE(bus.frames().isEmpty());
}

} // namespace
} // namespace quorvel::test
