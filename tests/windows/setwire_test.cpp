#include "settings/setwire.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

class SetWireOnTheBus : public SettingsOnTheBus<SetWire> {
protected:
    SetWireOnTheBus() { open(); }

    QStringList set(const QString& diameter, const QString& permittedError)
    {
        box("Dia").setText(diameter);
        box("Dia_error").setText(permittedError);
        return press("Command1");
    }
};

TEST_F(SetWireOnTheBus, StartsWithAddressAndSelfCalibration)
{
    EXPECT_EQ(form->windowTitle(), "Set Wire and Calibration Parameter");
    EXPECT_EQ(box("SensorNo").text(), "5");
    EXPECT_EQ(list("Combo1").currentText(), "Yes");
    EXPECT_EQ(list("Combo1").itemText(0), "No");
}

TEST_F(SetWireOnTheBus, OnlyTheFactoryEditionShowsSelfCalibration)
{
    EXPECT_FALSE(shows("Combo1"));
    EXPECT_FALSE(shows("Label4"));
    bench.edition = "FACTORY";
    open();
    EXPECT_TRUE(shows("Combo1"));
    EXPECT_TRUE(shows("Label4"));
}

TEST_F(SetWireOnTheBus, SetReachesTheReadout)
{
    EXPECT_EQ(set("2.5", "0.4"), QStringList("Diameter Parameters Setted OK"));
    EXPECT_EQ(bus.frames(), QStringList(":05672504010000FF"));
    EXPECT_EQ(state("wire").value("diameter").toDouble(), 2.5);
    EXPECT_EQ(state("wire").value("error").toDouble(), 0.4);
    EXPECT_TRUE(status().isEmpty());
}

TEST_F(SetWireOnTheBus, AddressOfTheWindowIsUsed)
{
    box("SensorNo").setText("12");
    set("2.5", "0.4");
    EXPECT_EQ(state("wire", 12).value("diameter").toDouble(), 2.5);
    EXPECT_EQ(state("wire", 5).value("diameter").toDouble(), 1.5);
    EXPECT_EQ(bench.currentAddress, "5");
}

TEST_F(SetWireOnTheBus, FactoryEditionSwitchesSelfCalibration)
{
    bench.edition = "FACTORY";
    open();
    list("Combo1").setCurrentIndex(0);
    set("1.5", "0.3");
    EXPECT_EQ(bus.frames(), QStringList(":05671503000000FF"));
    EXPECT_EQ(press("Command3"), QStringList("Diameter and permitted Error is set as 1.5mm, 0.3mm\r\n"
                                             "Auto Self Calibration Function is turned OFF."));
}

TEST_F(SetWireOnTheBus, QueryShowsBothLengths)
{
    EXPECT_EQ(press("Command3"), QStringList("Diameter and permitted Error is set as 1.5mm, 0.3mm\r\n"));
    EXPECT_EQ(bus.frames(), QStringList(":0568FF"));
    EXPECT_EQ(box("Dia").text(), "");
}

TEST_F(SetWireOnTheBus, EntriesAreCheckedInOrder)
{
    box("SensorNo").clear();
    EXPECT_EQ(set("", ""), QStringList("Address Error"));
    box("SensorNo").setText("5");
    EXPECT_EQ(set("abc", "abc"), QStringList("Diameter Input Error"));
    EXPECT_EQ(set("0.0", "0.3"), QStringList("Diameter Input Error"));
    EXPECT_EQ(set("1.5", ""), QStringList("Permitted Error Input Error"));
    EXPECT_TRUE(bus.frames().isEmpty());
    EXPECT_EQ(set("0", "0"), QStringList("Diameter Parameters Setted OK"));
}

TEST_F(SetWireOnTheBus, LongDiameterIsSentAndWarnedOf)
{
    set("12.3", "0.3");
    EXPECT_EQ(bus.frames(), QStringList(":056712303010000FF"));
    EXPECT_TRUE(status().startsWith("The frame is longer than the readout expects")) << qPrintable(status());
}

TEST_F(SetWireOnTheBus, SilenceAndShortAnswersAreCommErrors)
{
    set("2.5", "0.4");
    for (const auto* name : {"Command1", "Command3"}) {
        bus.clearFaults();
        bus.fault("silent@6");
        EXPECT_EQ(press(name), QStringList("Comm Error"));
        EXPECT_EQ(status(), "The readout did not answer.");
        bus.clearFaults();
        bus.fault("short@6");
        EXPECT_EQ(press(name), QStringList("Comm Error"));
        EXPECT_EQ(status(), "Only 18 of 19 characters of the answer arrived.");
    }
    EXPECT_EQ(box("Dia").text(), "2.5");
    EXPECT_EQ(box("Dia_error").text(), "0.4");
}

TEST_F(SetWireOnTheBus, EchoThatDiffersIsNoFailure)
{
    bus.fault("echo@67");
    EXPECT_EQ(set("1.5", "0.3"), QStringList("Diameter Parameters Setted OK"));
}

TEST_F(SetWireOnTheBus, AnswerWithoutNumbersShowsNoMessage)
{
    bus.fault("badnumber@68");
    EXPECT_TRUE(press("Command3").isEmpty());
    EXPECT_TRUE(status().contains("holds no numbers")) << qPrintable(status());
}

TEST_F(SetWireOnTheBus, ExitCloses)
{
    button("Command2").click();
    EXPECT_FALSE(form->isVisible());
}

/// The same window where only time passes.
class SetWireByHand : public SettingsWindow<SetWire, BenchByHand> {};

TEST_F(SetWireByHand, WhatWaitsIsTakenAsTheAnswer)
{
    open();
    box("Dia").setText("1.5");
    box("Dia_error").setText("0.3");
    device->receive("19 waiting already.");
    EXPECT_EQ(press("Command1"), QStringList("Diameter Parameters Setted OK"));
    device->receive(":01682504010000FF\r\n");
    EXPECT_EQ(press("Command3"), QStringList("Diameter and permitted Error is set as 2.5mm, 0.4mm\r\n"));
}

TEST_F(SetWireByHand, AnswerThatWhatWaitedHasShiftedIsShownAndLeavesNothingBehind)
{
    open();
    onFrame = [this] { clock.plan(0.02, [this] { device->receive("\r\n"); }); };
    device->receive("\r\n");
    answerWith({":01681503010000FF", ":01681503010000FF"});
    EXPECT_EQ(press("Command3"), QStringList("Diameter and permitted Error is set as 6.8mm, 1.5mm\r\n"));
    EXPECT_EQ(status(), "The readout answered \"??:01681503010000FF\" to \":0168FF\".");
    EXPECT_EQ(press("Command3"), QStringList("Diameter and permitted Error is set as 1.5mm, 0.3mm\r\n"));
    EXPECT_EQ(status(), "");
}

TEST_F(SetWireByHand, QueryWithoutAnAddressIsSentAsZero)
{
    open();
    box("SensorNo").clear();
    EXPECT_EQ(press("Command3"), QStringList("Comm Error"));
    EXPECT_EQ(frames, std::vector<std::string>{":0068FF"});
}

TEST_F(SetWireByHand, OtherCommandDigitsInAReplyStillCount)
{
    open();
    box("Dia").setText("1.5");
    box("Dia_error").setText("0.3");
    answerWith({":01992504010000FF\r\n", ":01992504010000FF\r\n"});
    EXPECT_EQ(press("Command3"), QStringList("Diameter and permitted Error is set as 2.5mm, 0.4mm\r\n"));
    EXPECT_EQ(status(), "");
    EXPECT_EQ(press("Command1"), QStringList("Diameter Parameters Setted OK"));
    EXPECT_EQ(status(), "");
}

} // namespace
} // namespace quorvel::test
