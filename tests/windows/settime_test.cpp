#include "settings/settime.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

class SetTimeOnTheBus : public SettingsOnTheBus<SetTime> {
protected:
    SetTimeOnTheBus() { open(); }
};

TEST_F(SetTimeOnTheBus, StartsWithTheCurrentAddress)
{
    EXPECT_EQ(form->windowTitle(), "Set Clock");
    EXPECT_EQ(box("Text1").text(), "5");
}

TEST_F(SetTimeOnTheBus, YesSetsTheReadoutsClock)
{
    bus.command("set 5 clock 2031-02-03T04:05:06");
    messages.answers = {true};
    const auto shown = press("Command1");
    ASSERT_EQ(shown.size(), 2);
    EXPECT_TRUE(shown[0].startsWith("Current time is 2031-02-03  04:05:0")) << qPrintable(shown[0]);
    EXPECT_EQ(shown[1], "Set OK");
    const auto clockNow = QDateTime::fromString(bus.state(5).value("clock").toString(), Qt::ISODate);
    EXPECT_LE(std::abs(clockNow.secsTo(QDateTime::currentDateTime())), 2);
}

TEST_F(SetTimeOnTheBus, NoSendsNothing)
{
    messages.answers = {false};
    EXPECT_EQ(press("Command1").size(), 1);
    EXPECT_EQ(bus.frames(), QStringList(":0504FF"));
}

TEST_F(SetTimeOnTheBus, IncompleteAnswersHaveTheirMessageAndReason)
{
    struct {
        const char* fault;
        int boxes; ///< the question among them
        const char* message;
        const char* reason;
    } const rows[] = {
        {"silent@04", 1, "Comm Error", "The readout did not answer."},
        {"short@04", 1, "Comm Error", "Only 20 of 21 characters of the answer arrived."},
        {"silent@03", 2, "Set Error", "The readout did not answer."},
        {"short@03", 2, "Set Error", "Only 20 of 21 characters of the answer arrived."},
    };
    for (const auto& row : rows) {
        bus.clearFaults();
        bus.fault(row.fault);
        messages.answers = {true};
        const auto shown = press("Command1");
        EXPECT_EQ(shown.size(), row.boxes) << row.fault;
        EXPECT_EQ(shown.last(), row.message) << row.fault;
        EXPECT_EQ(status(), row.reason) << row.fault;
    }
}

TEST_F(SetTimeOnTheBus, EchoThatDiffersIsNoFailure)
{
    bus.fault("echo@03");
    messages.answers = {true};
    EXPECT_EQ(press("Command1").last(), "Set OK");
}

TEST_F(SetTimeOnTheBus, ExitCloses)
{
    button("Command2").click();
    EXPECT_FALSE(form->isVisible());
}

/// The same window where only time passes.
class SetTimeByHand : public SettingsWindow<SetTime, BenchByHand> {
protected:
    SetTimeByHand() { open(); }
};

TEST_F(SetTimeByHand, TimeIsTakenWhenTheOperatorAnswers)
{
    box("Text1").setText("5");
    answerWith({":0504991231235959FF\r\n", ":0503240517100530FF\r\n"});
    messages.answers = {true};
    messages.onShow = [this](const QString& text) {
        if (text.startsWith("Current time")) clock.move(3600);
    };
    const auto shown = press("Command1");
    EXPECT_EQ(shown.first(), "Current time is 2099-12-31  23:59:59.\r\n"
                             "Are you sure to change Pendulum's RTC time same as PC'time?");
    EXPECT_EQ(frames, (std::vector<std::string>{":0504FF", ":0503240517100530FF"}));
}

TEST_F(SetTimeByHand, ClockThatIsNoneIsShownAsReceivedAndStillAsked)
{
    answerWith({":0104XYZABC~~--::FF\r\n"});
    QString beside;
    messages.onShow = [&](const QString&) { beside = status(); };
    EXPECT_TRUE(press("Command1").first().startsWith("Current time is 20XY-ZA-BC  ~~:--:::."));
    EXPECT_EQ(beside, "The readout's clock shows no date and time.");
}

TEST_F(SetTimeByHand, PortThatVanishesBehindTheQuestionIsTheReason)
{
    answerWith({":0104240517090530FF\r\n"});
    messages.answers = {true};
    messages.onShow = [this](const QString& text) {
        if (text.startsWith("Current time")) device->vanish();
    };
    EXPECT_EQ(press("Command1").last(), "Set Error");
    EXPECT_EQ(status(), mscomm1.lostReason());
    EXPECT_TRUE(status().startsWith("by hand is gone (pulled).")) << qPrintable(status());
}

TEST_F(SetTimeByHand, WhatWaitsIsTakenAsTheAnswer)
{
    device->receive(":0104310203040506FF\r\n");
    EXPECT_TRUE(press("Command1").first().startsWith("Current time is 2031-02-03  04:05:06."));
    messages.answers = {true};
    messages.onShow = [this](const QString& text) {
        if (text.startsWith("Current time")) device->receive("21 characters waiting");
    };
    answerWith({":0104310203040506FF\r\n"});
    EXPECT_EQ(press("Command1").last(), "Set OK");
}

TEST_F(SetTimeByHand, EmptyAddressIsSentAsItStands)
{
    box("Text1").clear();
    press("Command1");
    EXPECT_EQ(frames.front(), ":0004FF");
}

TEST_F(SetTimeByHand, ItsBoxIsACopyOfTheCurrentAddress)
{
    EXPECT_EQ(box("Text1").text(), "1");
    box("Text1").setText("12");
    press("Command1");
    EXPECT_EQ(frames, std::vector<std::string>{":0C04FF"});
    EXPECT_EQ(bench.currentAddress, "1");
}

} // namespace
} // namespace quorvel::test
