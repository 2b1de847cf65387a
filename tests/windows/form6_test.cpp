#include "calibration/form6.h"

#include "support/bench_by_hand.h"
#include "support/bench_on_the_bus.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quorvel::test {
namespace {

using calibration::Form6;

class Form6OnTheBus : public BenchOnTheBus {
protected:
    Form6OnTheBus() : BenchOnTheBus({"--fast", "--readout", "12:B"}), form(workplace)
    {
        bench.currentAddress = "12";
        form.show();
    }
    QLineEdit& Text1() { return *child<QLineEdit>(form, "Text1"); }
    void query() { child<QPushButton>(form, "Command1")->click(); }
    void set(const QString& location)
    {
        Text1().setText(location);
        child<QPushButton>(form, "Command2")->click();
    }
    QString kept() { return bus.state(12)["stitching"].toString(); }

    Form6 form;
};

TEST_F(Form6OnTheBus, HasItsCaptions)
{
    EXPECT_EQ(form.windowTitle(), "Y-Direction Stitching");
    EXPECT_EQ(child<QLabel>(form, "Label1")->text(), "Location");
    EXPECT_EQ(child<QLabel>(form, "Label1")->buddy(), &Text1());
    EXPECT_EQ(child<QPushButton>(form, "Command1")->text(), "Query");
    EXPECT_EQ(child<QPushButton>(form, "Command2")->text(), "Set");
}

TEST_F(Form6OnTheBus, QueryShowsWhatTheReadoutKeeps)
{
    bus.command("set 12 stitching 0512");
    query();
    EXPECT_EQ(Text1().text(), "0512");
    EXPECT_EQ(lastMessage(), "Y-Direction stitching location is 0512");
    EXPECT_EQ(bus.frames(), QStringList{":0C7822FF"});
}

TEST_F(Form6OnTheBus, SetReachesTheReadout)
{
    set("0512");
    EXPECT_EQ(lastMessage(), "SetOK!");
    EXPECT_EQ(kept(), "0512");
    set("abcd");
    EXPECT_EQ(lastMessage(), "SetOK!");
    EXPECT_EQ(kept(), "abcd");
}

TEST_F(Form6OnTheBus, WrongLengthIsNotSent)
{
    for (const auto* typed : {"", "123", "12345", " 123"}) {
        set(typed);
        EXPECT_EQ(lastMessage(), "Location input error, pls input 4 numbers") << typed;
    }
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(Form6OnTheBus, OtherEchoIsSilent)
{
    bus.fault("echo@7821");
    set("0512");
    EXPECT_TRUE(messages.shown.isEmpty());
    const auto told = child<QLabel>(form, "Status")->text();
    EXPECT_TRUE(told.contains("repeated something else")) << qPrintable(told);
}

class Form6ByHand : public BenchByHand {
protected:
    Form6ByHand() : form(workplace) {}
    Form6 form;
};

TEST_F(Form6ByHand, BlankInFrontGoesOutWithTheLocation)
{
    answerWith({":017821 123FF\r\n"});
    child<QLineEdit>(form, "Text1")->setText(" 1234");
    child<QPushButton>(form, "Command2")->click();
    EXPECT_EQ(frames, std::vector<std::string>{":017821 1234FF"});
    EXPECT_EQ(messages.last(), "SetOK!");
}

TEST_F(Form6ByHand, TakesTheFourCharactersWhateverTheyAre)
{
    answerWith({"???????~ z1FF\r\n"});
    child<QPushButton>(form, "Command1")->click();
    EXPECT_EQ(messages.last(), "Y-Direction stitching location is ~ z1");
}

TEST_F(Form6ByHand, NoAnswerAndAShortOneAreCommErrors)
{
    answerWith({"", ":0178220512FF\r", "", ":0178210512FF\r"});
    child<QLineEdit>(form, "Text1")->setText("0512");
    for (const auto* button : {"Command1", "Command1", "Command2", "Command2"}) {
        messages.shown.clear();
        child<QPushButton>(form, button)->click();
        EXPECT_EQ(messages.last(), "Comm Error");
    }
    EXPECT_EQ(child<QLineEdit>(form, "Text1")->text(), "0512");
}

TEST_F(Form6ByHand, SurvivesAnAdapterThatIsPulled)
{
    onFrame = [this] { device->vanish(); };
    child<QPushButton>(form, "Command1")->click();
    EXPECT_EQ(messages.last(), "Comm Error");
    EXPECT_FALSE(mscomm1.PortOpen());
    const auto told = child<QLabel>(form, "Status")->text();
    EXPECT_TRUE(told.contains("is gone")) << qPrintable(told);
}

TEST_F(Form6ByHand, WhatWaitsIsThrownAwayBeforeSetAndQuery)
{
    child<QLineEdit>(form, "Text1")->setText("0512");
    device->receive("15 waiting here");
    answerWith({":0178210512FF\r\n"});
    child<QPushButton>(form, "Command2")->click();
    EXPECT_EQ(messages.last(), "SetOK!");
    device->receive("15 waiting here");
    answerWith({":0178220777FF\r\n"});
    child<QPushButton>(form, "Command1")->click();
    EXPECT_EQ(messages.last(), "Y-Direction stitching location is 0777");
}

TEST_F(Form6ByHand, FullWidthDigitsAreRefusedInWordsAndNotSent)
{
    child<QLineEdit>(form, "Text1")->setText(QStringLiteral("０５１２"));
    child<QPushButton>(form, "Command2")->click();
    EXPECT_EQ(messages.shown,
              QStringList(QStringLiteral("\"０５１２\" was not sent: it holds characters that the bus "
                                         "cannot carry. Type plain digits.")));
    EXPECT_EQ(frames, std::vector<std::string>());
}

} // namespace
} // namespace quorvel::test
