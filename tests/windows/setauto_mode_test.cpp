#include "windows/setauto_on_the_bus.h"

#include <gmock/gmock.h>

namespace quorvel::test {

namespace {

TEST_F(SetAutoOnTheBus, ShowsItsControls)
{
    EXPECT_EQ(form.windowTitle(), "Set AutoReading");
    EXPECT_EQ(child<QLabel>(form, "Label1")->text(), "Interval");
    EXPECT_EQ(child<QLabel>(form, "Label2")->text(), "Address");
    EXPECT_EQ(child<QPushButton>(form, "Command1")->text(), "Set Auto_Reading Mode");
    EXPECT_EQ(child<QPushButton>(form, "Command2")->text(), "Get Auto_Reading Data");
    EXPECT_EQ(child<QPushButton>(form, "Command3")->text(), "Delete Data from Readout");
    EXPECT_EQ(child<QLabel>(form, "Label1")->buddy(), &controls.Combo1());
    EXPECT_EQ(child<QLabel>(form, "Label2")->buddy(), &controls.Text1());
    EXPECT_FALSE(controls.Label3().isVisible());
    EXPECT_EQ(controls.Text1().text(), "5");
}

TEST_F(SetAutoOnTheBus, OffersEightIntervalsFromWhichOneHourIsSelected)
{
    QStringList entries;
    for (int i = 0; i < controls.Combo1().count(); ++i) {
        entries << controls.Combo1().itemText(i);
    }
    EXPECT_EQ(entries, QStringList({"20 seconds", "01 minute", "02 minutes", "05 minutes", "10 minutes",
                                    "20 minutes", "30 minutes", "01 hour"}));
    EXPECT_EQ(controls.Combo1().currentIndex(), 7);
}

TEST_F(SetAutoOnTheBus, NoLeavesTheModeAlone)
{
    bus.command("reply 5 06 :05060100050000FF");
    controls.press("Command1");
    EXPECT_EQ(messages.shown,
              QStringList("Current Interval is 0 hours 5 minutes 0 seconds\r\nChange AutoReading Mode?"));
    EXPECT_EQ(bus.frames(), QStringList(":0506FF"));
}

TEST_F(SetAutoOnTheBus, FixedTimesAreShown)
{
    bus.command("reply 5 06 :05060208121620FF");
    controls.press("Command1");
    EXPECT_EQ(lastMessage(), "Current AutoReading Mode is fixed time every day at 8,12,16,20 o'clock.\r\n"
                             "Change AutoReading Mode?");
}

class OtherMode : public SetAutoOnTheBus, public ::testing::WithParamInterface<const char*> {};

TEST_P(OtherMode, IsFixedTimes)
{
    bus.command(QStringLiteral("reply 5 06 :0506") + GetParam() + "08121620FF");
    controls.press("Command1");
    EXPECT_EQ(messages.shown,
              QStringList("Current AutoReading Mode is fixed time every day at 8,12,16,20 o'clock.\r\n"
                          "Change AutoReading Mode?"));
}

INSTANTIATE_TEST_SUITE_P(SetAuto, OtherMode, ::testing::Values("00", "XY", "99"));

TEST_F(SetAutoOnTheBus, PulledAdapterStaysTheReasonAtTheBottom)
{
    bus.fault("hangup@5/06");
    controls.press("Command1");
    const auto reason = controls.status();
    EXPECT_TRUE(reason.startsWith(bus.device() + " is gone")) << qPrintable(reason);
    for (const auto* name : {"Command1", "Command3"}) {
        messages.answers = {true};
        controls.press(name);
        EXPECT_EQ(controls.status(), reason) << name;
    }
}

TEST_F(SetAutoOnTheBus, YesSetsTheSelectedInterval)
{
    messages.answers = {true, true};
    controls.press("Command1");
    EXPECT_EQ(lastMessage(), "Set OK");
    controls.Combo1().setCurrentIndex(3);
    controls.press("Command1");
    EXPECT_EQ(lastMessage(), "Set OK");
    EXPECT_EQ(bus.frames(), QStringList({":0506FF", ":05050101000000FF", ":0506FF", ":05050100050000FF"}));
    const auto values = bus.state(5).value("auto").toObject().value("values").toArray();
    EXPECT_EQ(values, QJsonArray({0, 5, 0, 0}));
}

TEST_F(SetAutoOnTheBus, WithoutSelectionTheFrameCarriesNoInterval)
{
    bus.fault("short@5/06:1");
    messages.answers = {true};
    controls.Combo1().setCurrentIndex(-1);
    controls.press("Command1");
    EXPECT_EQ(bus.frames(), QStringList({":0506FF", ":050501FF"}));
    EXPECT_EQ(messages.shown, QStringList({"Comm Error",
                                           "Current Interval is 1 hours 0 minutes 0 seconds\r\n"
                                           "Change AutoReading Mode?",
                                           "Set Error"}));
}

TEST_F(SetAutoOnTheBus, SilentReadoutIsAskedAboutAllTheSame)
{
    bus.fault("silent@*");
    messages.answers = {true};
    controls.press("Command1");
    EXPECT_EQ(messages.shown,
              QStringList({"Comm Error",
                           "Current AutoReading Mode is fixed time every day at 0,0,0,0 o'clock.\r\n"
                           "Change AutoReading Mode?",
                           "Set Error"}));
    EXPECT_EQ(bus.frames(), QStringList({":0506FF", ":05050101000000FF"}));
}

TEST_F(SetAutoOnTheBus, ContentOfTheEchoDoesNotMatter)
{
    bus.fault("echo@5/0501");
    messages.answers = {true};
    controls.press("Command1");
    EXPECT_EQ(lastMessage(), "Set OK");
}

TEST_F(SetAutoOnTheBus, TypedAddressIsAsked)
{
    controls.Text1().setText("12");
    controls.press("Command1");
    EXPECT_EQ(bus.frames(), QStringList(":0C06FF"));
}

TEST_F(SetAutoOnTheBus, AddressThatNoReadoutHasIsPointedOut)
{
    controls.Text1().setText("250");
    EXPECT_EQ(controls.status(), "No readout has the address \"250\". Addresses are 1 to 249.");
    controls.Text1().setText("5");
    EXPECT_EQ(controls.status(),
              "Readout 5 has not been asked for its stored records since the program was started.");
}

TEST_F(SetAutoOnTheBus, ReturnPressesOnlyTheButtonThatHasTheFocus)
{
    form.activateWindow();
    controls.Text1().setFocus();
    QTest::keyClick(&controls.Text1(), Qt::Key_Return);
    EXPECT_EQ(messages.shown, QStringList());
    auto* button = child<QPushButton>(form, "Command3");
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Return);
    EXPECT_EQ(lastMessage(), "Are you sure to delete data saved in Pendulum Readout");
}

TEST_F(SetAutoOnTheBus, EscapeCloses)
{
    QTest::keyClick(&form, Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
}

} // namespace

} // namespace quorvel::test
