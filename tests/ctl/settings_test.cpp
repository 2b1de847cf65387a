#include "ctl/quorvelctl_settings.h"

#include <QDate>

namespace quorvel::test {
namespace {

TEST_F(QuorvelctlSettings, OffsetIsSetAndPrinted)
{
    const auto set = runC({"offset", "Z", "-1.5"});
    EXPECT_EQ(set.out, "-1.50000\n") << qPrintable(set.err);
    EXPECT_EQ(set.err, "Set OK!\n");
    EXPECT_EQ(runC({"offset", "Z", "--json"}).out,
              R"({"address":33,"direction":"Z","offsetMm":-1.5,"offsetText":"-1.50000"})"
              "\n");
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
              R"({"address":33,"direction":"X","offsetMm":12,"offsetText":"+12.0000",)"
              R"("readingMm":12.3,"readingText":"+12.3000","valueWithoutOffsetMm":0.3})"
              "\n");
}

TEST_F(QuorvelctlSettings, ReferenceWhoseOffsetIsTooLongIsWarnedOf)
{
    bus.command("set 33 x -2");
    const auto set = runC({"reference", "X", "999"});
    EXPECT_EQ(set.status, 4);
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
        EXPECT_EQ(ended.status, 5) << qPrintable(name);
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
    EXPECT_EQ(ended.status, 3);
    ASSERT_EQ(ended.err.count('\n'), 2) << qPrintable(ended.err);
    EXPECT_TRUE(ended.err.startsWith(bus.device() + " is gone (")) << qPrintable(ended.err);
    EXPECT_TRUE(ended.err.endsWith("\nComm Error\n")) << qPrintable(ended.err);
}

TEST_F(QuorvelctlSettings, SwitchesAreSetAndPrinted)
{
    EXPECT_EQ(runC({"invert", "Y", "on"}).out, "on\n");
    EXPECT_EQ(runC({"invert", "Y"}).out, "on\n");
    EXPECT_EQ(runC({"swap", "on", "--json"}).out, "{\"address\":33,\"swapped\":true}\n");
    EXPECT_EQ(runC({"swap"}).out, "on\n");
    EXPECT_EQ(runC({"feature", "on"}).out, "on\n");
    EXPECT_EQ(runC({"feature"}).out, "on\n");
    EXPECT_TRUE(state("switches").value("invertY").toBool());
    EXPECT_TRUE(bus.state(33).value("reference").toBool());
}

TEST_F(QuorvelctlSettings, WireIsSetAndPrinted)
{
    const auto set = runC({"wire", "2.5", "0.4"});
    EXPECT_EQ(set.out, "Diameter and permitted Error is set as 2.5mm, 0.4mm\n") << qPrintable(set.err);
    EXPECT_EQ(runC({"wire", "--json"}).out,
              R"({"address":33,"diameterMm":2.5,"diameterText":"25","permittedErrorMm":0.4,)"
              R"("permittedErrorText":"04","selfCalibration":null})"
              "\n");
}

TEST_F(QuorvelctlSettings, ClockIsSetAndPrinted)
{
    bus.command("set 33 clock 2031-02-03T04:05:06");
    EXPECT_TRUE(runC({"clock"}).out.startsWith("2031-02-03  04:05:0"));
    const auto set = runC({"clock", "now"});
    EXPECT_TRUE(set.out.startsWith(QDate::currentDate().toString(Qt::ISODate))) << qPrintable(set.out);
}

TEST_F(QuorvelctlSettings, AddressIsChanged)
{
    EXPECT_EQ(runC({"address", "34"}).out, "34\n");
    EXPECT_EQ(bus.state(34).value("type").toString(), "C");
}

TEST_F(QuorvelctlSettings, AnswersThatDoNotConfirmAreExitStatus5)
{
    bus.fault("echo@7");
    const auto set = runC({"offset", "X", "1"});
    EXPECT_EQ(set.status, 5);
    EXPECT_EQ(set.out, "");
    EXPECT_TRUE(set.err.startsWith("Set Failed! The readout answered ")) << qPrintable(set.err);
    const auto reset = runC({"reset", "--yes"});
    EXPECT_EQ(reset.status, 5);
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
                                   {"wire", "1"},
                                   {"wire", "12.3", "1"},
                                   {"clock", "12:00"},
                                   {"address", "250"},
                                   {"address", "12.6"},
                                   {"address", "+34"},
                                   {"address", "33"},
                                   {"settings", "save"}};
    for (const auto& arguments : wrong)
        EXPECT_EQ(runC(arguments).status, 2) << qPrintable(arguments.join(' '));
    EXPECT_EQ(run({"--address", "5", "offset", "Z"}).status, 2);
    EXPECT_TRUE(bus.frames().isEmpty());
}

} // namespace
} // namespace quorvel::test
