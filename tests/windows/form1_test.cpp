#include "windows/form1_on_the_bus.h"

#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimer>

namespace quorvel::test {
namespace {

using Form1Window = Form1OnTheBus;

TEST_F(Form1Window, StartsAsEver)
{
    EXPECT_EQ(form->windowTitle(), "QUORVEL V4.11");
    EXPECT_TRUE(child<QRadioButton>(*form, "Option1")->isChecked());
    EXPECT_EQ(bench.instrumentType, link::TypeA);
    EXPECT_EQ(NoList(), "");
    EXPECT_EQ(child<QComboBox>(*form, "Combo1")->currentText(), "COM1 " + bus.device());
    EXPECT_EQ(button("Command1").text(), "OpenComm");
    EXPECT_EQ(button("Command2").text(), "Immediate Reading");
    EXPECT_FALSE(mscomm1.PortOpen());
}

TEST_F(Form1Window, TheBarHoldsItsMenusHelpAndQuit)
{
    QStringList bar;
    for (const auto* entry : child<QMenuBar>(*form, "menubar")->actions()) {
        bar << entry->text();
    }
    EXPECT_EQ(bar, QStringList({"Settings", "Readings", "Calibration", "Help", "Quit"}));
    QStringList settings;
    for (const auto* entry : child<QMenu>(*form, "Settings")->actions()) {
        settings << entry->text();
    }
    EXPECT_EQ(settings,
              QStringList({"Change Address", "Parameter Setting", "Offset Setting", "Reference Setting",
                           "Invert and Swap", "Clock Setting", "Reset Setting"}));
}

TEST_F(Form1Window, OpenCommTogglesThePort)
{
    button("Command1").click();
    EXPECT_TRUE(mscomm1.PortOpen());
    EXPECT_EQ(button("Command1").text(), "CloseComm");
    EXPECT_FALSE(action("AddPort").isEnabled());
    EXPECT_FALSE(action("RefreshPorts").isEnabled());
    button("Command1").click();
    EXPECT_FALSE(mscomm1.PortOpen());
    EXPECT_EQ(button("Command1").text(), "OpenComm");
    EXPECT_TRUE(action("AddPort").isEnabled());
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(Form1Window, APortInUseGivesTheMessageAndTheReason)
{
    const auto other = link::openDevice(bus.device(), {});
    ASSERT_TRUE(other.device);
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "The Commport is error,please change!");
    EXPECT_EQ(button("Command1").text(), "OpenComm");
    EXPECT_TRUE(status().contains("used by another program")) << qPrintable(status());
}

TEST_F(Form1Window, AnAddedPortIsSelectedAndAMissingOneExplained)
{
    messages.texts = {"/dev/ttyNowhere"};
    choose("AddPort");
    EXPECT_EQ(child<QComboBox>(*form, "Combo1")->currentText(), "COM2 /dev/ttyNowhere");
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "The Commport is error,please change!");
    EXPECT_TRUE(status().contains("does not exist")) << qPrintable(status());
    choose("RefreshPorts");
    EXPECT_EQ(child<QComboBox>(*form, "Combo1")->currentText(), "COM2 /dev/ttyNowhere");
}

TEST_F(Form1Window, AnEmptyPortListIsNoTrouble)
{
    link::PortList none({}, [] { return std::vector<link::PortInfo>(); });
    link::MSComm comm(none);
    link::Module1 module(comm, clock);
    Form1 window(bench, none, module, gate, messages);
    EXPECT_EQ(child<QComboBox>(window, "Combo1")->count(), 0);
    child<QPushButton>(window, "Command1")->click();
    EXPECT_EQ(lastMessage(), "The Commport is error,please change!");
    EXPECT_EQ(child<QPushButton>(window, "Command1")->text(), "OpenComm");
}

struct TypeCase {
    const char* option;
    int type;
    const char* fz;
    QStringList shown;
};

TEST_F(Form1Window, TheTypeDecidesWhichItemsShow)
{
    const QStringList all = {"Y_GrayScale_Data", "Z1_GrayScale_Data", "Z2_GrayScale_Data", "YD", "ZD", "SL"};
    const TypeCase cases[] = {
        {"Option2", 2, "Invert and Swap", {"Y_GrayScale_Data", "YD", "SL"}},
        {"Option3",
         3,
         "Invert and Swap",
         {"Y_GrayScale_Data", "Z1_GrayScale_Data", "Z2_GrayScale_Data", "YD", "ZD"}},
        {"Option4", 4, "Invert", {}},
        {"Option1", 1, "Invert and Swap", {"Y_GrayScale_Data", "YD"}},
    };
    for (const auto& [option, type, fz, expected] : cases) {
        child<QRadioButton>(*form, option)->click();
        EXPECT_EQ(bench.instrumentType, type);
        EXPECT_EQ(action("fz").text(), fz);
        QStringList shown;
        for (const auto& name : all) {
            if (action(name).isVisible()) shown << name;
        }
        EXPECT_EQ(shown, expected) << option;
        EXPECT_TRUE(action("X_GrayScale_Data").isVisible());
        EXPECT_TRUE(action("XD").isVisible());
    }
}

TEST_F(Form1Window, TheEditionDecidesAboutCalibration)
{
    EXPECT_FALSE(child<QMenu>(*form, "cal")->menuAction()->isVisible());
    bench.edition = "FACTORY";
    const Form1 factory(bench, ports, module1, gate, messages);
    EXPECT_TRUE(child<QMenu>(factory, "cal")->menuAction()->isVisible());
}

TEST_F(Form1Window, ItemsWithoutAWindowAreDisabled)
{
    EXPECT_FALSE(action("ChangeAddress").isEnabled());
    form->setOpener("ChangeAddress", [] {});
    EXPECT_TRUE(action("ChangeAddress").isEnabled());
}

TEST_F(Form1Window, GuardedItemsAskForAnOpenPort)
{
    QStringList opened;
    for (const auto* name :
         {"ChangeAddress", "WireSetting", "offset", "OS", "fz", "ClockSetting", "AutomaticReading", "SL"}) {
        form->setOpener(name, [&opened, name] { opened << name; });
        messages.shown.clear();
        choose(name);
        EXPECT_EQ(messages.shown, QStringList("CommPort not Opened")) << name;
    }
    EXPECT_TRUE(opened.isEmpty());
    openPort();
    choose("offset");
    EXPECT_EQ(opened, QStringList("offset"));
}

TEST_F(Form1Window, TheOtherItemsOpenTheirWindowsWithoutAskingForThePort)
{
    QStringList opened;
    const QStringList names = {"ResetSetting",
                               "X_GrayScale_Data",
                               "Y_GrayScale_Data",
                               "Z1_GrayScale_Data",
                               "Z2_GrayScale_Data",
                               "XD",
                               "YD",
                               "ZD"};
    for (const auto& name : names) {
        form->setOpener(name, [&opened, name] { opened << name; });
        choose(name);
    }
    EXPECT_EQ(opened, names);
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(Form1Window, SearchFindsBothReadouts)
{
    openPort();
    QTimer::singleShot(500, form.get(), [this] { EXPECT_EQ(NoList(), "Searching, please wait......"); });
    button("Command4").click();
    EXPECT_EQ(NoList(), "05,12");
    EXPECT_EQ(TestNo().text(), "05");
    EXPECT_EQ(bench.currentAddress, "05");
    EXPECT_EQ(bus.frames(), QStringList(":FF01FF"));
}

TEST_F(Form1Window, SearchOfASilentBusFindsNothing)
{
    openPort();
    bus.fault("silent@01");
    button("Command4").click();
    EXPECT_EQ(NoList(), "No Sensors(or MCU) Found");
    EXPECT_EQ(TestNo().text(), "");
}

TEST_F(Form1Window, SearchNeedsAnOpenPort)
{
    button("Command4").click();
    EXPECT_EQ(lastMessage(), "CommPort not Opened");
    EXPECT_EQ(NoList(), "");
}

TEST_F(Form1Window, ClicksAndKeysDuringASearchStartNothing)
{
    form->setOpener("offset", [] { ADD_FAILURE() << "a window opened in mid-search"; });
    openPort();
    QTimer::singleShot(300, form.get(), [this] {
        QTest::mouseClick(&button("Command4"), Qt::LeftButton);
        QTest::mouseClick(&button("Command1"), Qt::LeftButton);
        button("Command1").click();
        button("Command4").click();
        button("Command2").click();
        choose("offset");
        QTest::keyClicks(&TestNo(), "77");
        EXPECT_TRUE(status().contains("wait")) << qPrintable(status());
    });
    button("Command4").click();
    EXPECT_EQ(TestNo().text(), "05");
    EXPECT_TRUE(mscomm1.PortOpen());
    EXPECT_EQ(bus.frames(), QStringList(":FF01FF"));
}

TEST_F(Form1Window, APortPulledDuringASearchEndsIt)
{
    openPort();
    QTimer::singleShot(300, form.get(), [this] { bus.unplug(); });
    button("Command4").click();
    EXPECT_EQ(NoList(), "No Sensors(or MCU) Found");
    EXPECT_EQ(button("Command1").text(), "OpenComm");
    EXPECT_FALSE(mscomm1.PortOpen());
}

TEST_F(Form1Window, APulledPortChangesTheCaptionAndSaysWhy)
{
    openPort();
    bus.unplug();
    EXPECT_TRUE(QTest::qWaitFor([this] { return button("Command1").text() == "OpenComm"; }, kPatience));
    EXPECT_TRUE(status().contains(bus.device() + " is gone")) << qPrintable(status());
}

TEST_F(Form1Window, ClosingClosesThePort)
{
    openPort();
    form->close();
    EXPECT_FALSE(mscomm1.PortOpen());
}

TEST_F(Form1Window, TheReadingListGrowsWithTheWindow)
{
    form->resize(1000, 700);
    QCoreApplication::processEvents();
    const auto* inner = form->centralWidget();
    EXPECT_EQ(List1().width(), inner->width() - List1().x() - 24);
    EXPECT_EQ(List1().height(), inner->height() - List1().y() - 12);
    form->resize(1, 1);
    form->showMinimized();
    QCoreApplication::processEvents();
    form->showNormal();
    EXPECT_GT(List1().height(), 0);
}

TEST_F(Form1Window, HelpWithoutItsFileNamesTheFile)
{
    choose("Help");
    EXPECT_TRUE(lastMessage().contains(folder.filePath("readme.txt"))) << qPrintable(lastMessage());
}

TEST_F(Form1Window, Timer1CountsSeconds)
{
    EXPECT_TRUE(QTest::qWaitFor([this] { return form->ElapsedSeconds() >= 1; }, kPatience));
    EXPECT_EQ(form->ElapsedSeconds(), 1);
}

TEST_F(Form1Window, TheOtherWayOfOpeningKnowsFivePorts)
{
    EXPECT_EQ(form->OpenComm("1"), "");
    EXPECT_TRUE(mscomm1.PortOpen());
    mscomm1.setPortOpen(false);
    EXPECT_EQ(form->OpenComm("6"), "") << "6 becomes 1";
    EXPECT_NE(form->OpenComm("5"), "") << "there is no fifth port";
}

class ManyReadouts : public Form1OnTheBus {
protected:
    ManyReadouts() : Form1OnTheBus({"--fast", "--readout", "1-249:A"}) {}
};

TEST_F(ManyReadouts, AreAllFound)
{
    openPort();
    button("Command4").click();
    const auto found = NoList().split(',');
    EXPECT_EQ(found.size(), 249);
    EXPECT_EQ(found.first(), "01");
    EXPECT_EQ(found.last(), "249");
}

} // namespace
} // namespace quorvel::test
