#include "ctl/quorvelctl_settings.h"

namespace quorvel::test {
namespace {

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

TEST_F(QuorvelctlSettings, TheTypeOfAThreeDirectionReadoutIsFoundOut)
{
    bus.command("set 33 offsetz +2.00000");
    const auto save = run({"--address", "33", "settings", "save", path("a.json")});
    EXPECT_EQ(save.status, 0) << qPrintable(save.err);
    EXPECT_EQ(save.err, "Readout 33 measures Z: taken for type C.\n");
    EXPECT_EQ(saved("a.json").value("type"), QJsonValue("C"));
    EXPECT_EQ(saved("a.json").value("settings")["offsetZ"], QJsonValue("+2.00000"));
    bus.command("set 33 offsetz +0.00000");
    const auto restore = run({"--address", "33", "settings", "restore", path("a.json"), "--yes"});
    EXPECT_EQ(restore.status, 0) << qPrintable(restore.err);
    EXPECT_EQ(state("offsets").value("Z").toString(), "+2.00000");
}

TEST_F(QuorvelctlSettings, AReadoutWithoutZIsTakenForTypeAUnlessItsTypeIsGiven)
{
    const auto save = run({"--address", "12", "settings", "save", path("a.json")});
    EXPECT_EQ(save.status, 0) << qPrintable(save.err);
    EXPECT_EQ(save.err, "Readout 12 does not measure Z: taken for type A. Give another type with --type.\n");
    EXPECT_EQ(saved("a.json").value("type"), QJsonValue("A"));
    EXPECT_EQ(run({"--address", "12", "--type", "B", "settings", "save", path("b.json")}).err, "");
    EXPECT_EQ(saved("b.json").value("type"), QJsonValue("B"));
}

TEST_F(QuorvelctlSettings, NothingIsSavedOrSetWhileTheTypeIsUnclear)
{
    write("a.json", R"({"format":"quorvel-settings","settings":{"swap":true}})");
    bus.fault("garbled@2102");
    const QString why = "Whether readout 33 measures Z could not be found out. Give its type with --type.\n";
    for (const QStringList& arguments : {QStringList{"settings", "save", path("b.json")},
                                         {"settings", "restore", path("a.json"), "--yes"}}) {
        const auto ended = run(QStringList({"--address", "33"}) + arguments);
        EXPECT_EQ(ended.status, 5);
        EXPECT_TRUE(ended.err.startsWith(why)) << qPrintable(ended.err);
    }
    EXPECT_FALSE(QFile::exists(path("b.json")));
    EXPECT_FALSE(state("switches").value("swap").toBool());
}

TEST_F(QuorvelctlSettings, AnotherAddressOrTypeIsRefusedUnlessAnyReadoutWillDo)
{
    struct {
        const char* head;
        const char* words;
    } const rows[] = {{R"("address":12,"type":"C")", "readout 12"},
                      {R"("address":33,"type":"A")", "type A"},
                      {R"("address":12,"type":"B")", "readout 12, type B"}};
    for (const auto& row : rows) {
        bus.command("set 33 swap off");
        write("a.json", QByteArray(R"({"format":"quorvel-settings","version":1,)") + row.head +
                            R"(,"settings":{"swap":true}})");
        const QStringList arguments{"settings", "restore", path("a.json"), "--yes"};
        const auto refused = run(QStringList({"--address", "33"}) + arguments);
        EXPECT_EQ(refused.status, 6);
        EXPECT_EQ(refused.err.section('\n', -2, -2),
                  path("a.json") + " is of " + row.words +
                      ". Add --any-readout to set readout 33 of type C to it.");
        EXPECT_FALSE(state("switches").value("swap").toBool()) << row.head;
        const auto forced = runC(arguments + QStringList("--any-readout"));
        EXPECT_EQ(forced.status, 0) << qPrintable(forced.err);
        EXPECT_TRUE(state("switches").value("swap").toBool()) << row.head;
    }
}

// A readout without Z can be of three types; the file knows which.
TEST_F(QuorvelctlSettings, TheTypeOfTheFileIsTakenForAReadoutWithoutZ)
{
    EXPECT_EQ(run({"--address", "12", "--type", "B", "settings", "save", path("b.json")}).status, 0);
    bus.command("set 12 stitching 1234");
    const auto restore = run({"--address", "12", "settings", "restore", path("b.json"), "--yes"});
    EXPECT_EQ(restore.status, 0) << qPrintable(restore.err);
    EXPECT_EQ(bus.state(12).value("stitching").toString(), "3665");
}

TEST_F(QuorvelctlSettings, ExistingFileIsOnlyOverwrittenWhenAsked)
{
    write("a.json", "precious");
    EXPECT_EQ(runC({"settings", "save", path("a.json")}).status, 6);
    EXPECT_TRUE(saved("a.json").isEmpty());
    EXPECT_EQ(runC({"settings", "save", path("a.json"), "--force"}).status, 0);
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
        EXPECT_EQ(save.status, 5) << row.setting;
        EXPECT_FALSE(QFile::exists(path("a.json"))) << row.setting;
        EXPECT_TRUE(save.err.contains(QString(row.setting) + ": not read.")) << qPrintable(save.err);
        EXPECT_TRUE(save.err.endsWith("Nothing was saved.\n")) << qPrintable(save.err);
    }
}

TEST_F(QuorvelctlSettings, SilentReadoutIsGivenUpAtOnce)
{
    const auto printed = run({"settings", "--address", "77"});
    EXPECT_EQ(printed.status, 4);
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "Comm Error The readout did not answer.\nwire: not read.\n");
}

TEST_F(QuorvelctlSettings, RestoreAsksFirst)
{
    write("a.json", R"({"format":"quorvel-settings","settings":{"swap":true}})");
    const auto restore = runC({"settings", "restore", path("a.json")});
    EXPECT_EQ(restore.status, 6);
    EXPECT_TRUE(restore.err.contains("Set 1 settings of readout 33?")) << qPrintable(restore.err);
    EXPECT_FALSE(state("switches").value("swap").toBool());
}

TEST_F(QuorvelctlSettings, ValueThatTheReadoutDoesNotKeepIsReported)
{
    write("a.json", R"({"format":"quorvel-settings","settings":{"offsetX":"+1.00000","swap":true}})");
    bus.command("reply 33 72 :2172+2.00000FF");
    const auto restore = runC({"settings", "restore", path("a.json"), "--yes"});
    EXPECT_EQ(restore.status, 5);
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
    refused(R"({"format":"quorvel-settings","version":2,"settings":{"swap":true}})");
    refused(R"({"format":"quorvel-settings","address":"33","settings":{"swap":true}})");
    refused(QByteArray(2'000'000, ' '));
    EXPECT_EQ(runC({"settings", "restore", path("missing.json"), "--yes"}).status, 1);
}

} // namespace
} // namespace quorvel::test
