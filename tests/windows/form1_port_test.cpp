#include "windows/form1_by_hand.h"

#include "windows/form1_on_the_bus.h"

namespace quorvel::test {
namespace {

QStringList twelveDevices()
{
    QStringList devices;
    for (int number = 1; number <= 12; ++number) {
        devices << QStringLiteral("/dev/ttyFake%1").arg(number);
    }
    return devices;
}

class PortsByHand : public Form1ByHand {
protected:
    PortsByHand() : Form1ByHand(twelveDevices()) {}
};

TEST_F(PortsByHand, ThePortNumberMayHaveTwoDigits)
{
    for (const int index : {9, 11}) {
        Combo1().setCurrentIndex(index);
        button("Command1").click();
        ASSERT_FALSE(openings.empty());
        EXPECT_EQ(openings.back().name, QStringLiteral("/dev/ttyFake%1").arg(index + 1));
        button("Command1").click();
    }
}

TEST_F(PortsByHand, TheOtherWayOfOpeningClosesThePortAndUsesMarkParityAndModemLines)
{
    button("Command1").click();
    const QPointer<FakeDevice> first = device;
    EXPECT_EQ(form.OpenComm("2"), "");
    EXPECT_FALSE(first);
    ASSERT_EQ(openings.size(), 2U);
    EXPECT_EQ(openings[1].name, "/dev/ttyFake2");
    EXPECT_EQ(openings[1].line.parity, 'm');
    EXPECT_TRUE(openings[1].line.rts);
    EXPECT_TRUE(openings[1].line.dtr);
}

TEST_F(PortsByHand, TheOtherWayOfOpeningKnowsFivePorts)
{
    const std::pair<const char*, const char*> cases[] = {
        {"1", "/dev/ttyFake1"},  {"5", "/dev/ttyFake5"},  {"6", "/dev/ttyFake1"}, {"0", "/dev/ttyFake1"},
        {"-3", "/dev/ttyFake1"}, {"12", "/dev/ttyFake1"}, {"", "/dev/ttyFake1"}};
    for (const auto& [number, opened] : cases) {
        EXPECT_EQ(form.OpenComm(number), "");
        EXPECT_EQ(openings.back().name, opened) << number;
    }
}

TEST_F(PortsByHand, EveryOpeningUsesTheLineSettingsOfTheBus)
{
    form.OpenComm("1");
    button("Command1").click();
    EXPECT_FALSE(mscomm1.PortOpen());
    button("Command1").click();
    ASSERT_EQ(openings.size(), 2U);
    EXPECT_EQ(openings[1].line.baud, 9600);
    EXPECT_EQ(openings[1].line.parity, 'n');
    EXPECT_EQ(openings[1].line.dataBits, 8);
    EXPECT_EQ(openings[1].line.stopBits, 1);
}

TEST_F(Form1ByHand, ADeviceServerMayBeAdded)
{
    messages.texts = {"tcp:10.0.0.7:4001"};
    choose("AddPort");
    EXPECT_EQ(Combo1().currentText(), "COM2 tcp:10.0.0.7:4001");
    button("Command1").click();
    ASSERT_EQ(openings.size(), 1U);
    EXPECT_EQ(openings[0].name, "tcp:10.0.0.7:4001");
}

TEST_F(Form1ByHand, F5RefreshesTheListWhileThePortIsClosed)
{
    activate();
    QTest::keyClick(form.windowHandle(), Qt::Key_F5);
    EXPECT_EQ(status(), "Ports found: 1");
    button("Command1").click();
    QTest::keyClick(form.windowHandle(), Qt::Key_F5);
    EXPECT_EQ(status(), "/dev/ttyFake is open.");
}

TEST_F(Form1OnTheBus, OpenCommTogglesThePort)
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

TEST_F(Form1OnTheBus, APortInUseGivesTheMessageAndTheReason)
{
    const auto other = link::openDevice(bus.device(), {});
    ASSERT_TRUE(other.device);
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "The Commport is error,please change!");
    EXPECT_EQ(button("Command1").text(), "OpenComm");
    EXPECT_TRUE(status().contains("used by another program")) << qPrintable(status());
}

TEST_F(Form1OnTheBus, AnAddedPortIsSelectedAndAMissingOneExplained)
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

TEST_F(Form1OnTheBus, AnEmptyPortListIsNoTrouble)
{
    link::PortList none({}, [] { return std::vector<link::PortInfo>(); });
    link::MSComm comm(none);
    link::Module1 module(comm, clock);
    Form1 window({bench, module, gate, messages}, none);
    EXPECT_EQ(child<QComboBox>(window, "Combo1")->count(), 0);
    child<QPushButton>(window, "Command1")->click();
    EXPECT_EQ(lastMessage(), "The Commport is error,please change!");
    EXPECT_EQ(child<QPushButton>(window, "Command1")->text(), "OpenComm");
}

TEST_F(Form1OnTheBus, APulledPortChangesTheCaptionAndSaysWhy)
{
    openPort();
    bus.unplug();
    EXPECT_TRUE(QTest::qWaitFor([this] { return button("Command1").text() == "OpenComm"; }, kPatience));
    EXPECT_TRUE(status().contains(bus.device() + " is gone")) << qPrintable(status());
}

TEST_F(Form1OnTheBus, ClosingClosesThePort)
{
    openPort();
    form->close();
    EXPECT_FALSE(mscomm1.PortOpen());
}

/// The main window with the ports that a platform tells of, in its order.
class PlatformPorts : public Form1ByHand {
protected:
    /// Chooses a port of the list and presses "OpenComm".
    void openAt(int index)
    {
        child<QComboBox>(window, "Combo1")->setCurrentIndex(index);
        child<QPushButton>(window, "Command1")->click();
    }
    QString told() { return child<QLabel>(window, "Status")->text(); }

    QStringList opened;
    link::PortList platform{
        {}, [] {
            return std::vector<link::PortInfo>{
                {"COM7", "", 7}, {"COM3", "", 3}, {"VCP3", "", 3}, {"CNCA0", "", 0}, {"COM12", "USB", 12}};
        }};
    link::MSComm comm{platform, [this](const QString& name, const link::LineSettings&) {
                          opened << name;
                          return link::OpenedDevice{std::make_unique<FakeDevice>(), {}};
                      }};
    link::Module1 module{comm, clock};
    Form1 window{{bench, module, gate, messages}, platform};
};

TEST_F(PlatformPorts, AreListedInTheOrderOfThePlatformAndTheFirstIsSelected)
{
    const auto& list = *child<QComboBox>(window, "Combo1");
    QStringList entries;
    for (int i = 0; i < list.count(); ++i) {
        entries << list.itemText(i);
    }
    EXPECT_EQ(entries, QStringList({"COM7", "COM3", "VCP3", "CNCA0", "COM12 USB"}));
    EXPECT_EQ(list.currentIndex(), 0);
    child<QPushButton>(window, "Command1")->click();
    EXPECT_EQ(opened, QStringList("COM7"));
}

TEST_F(PlatformPorts, AreOpenedByTheNumberInTheirName)
{
    openAt(4);
    EXPECT_EQ(opened, QStringList("COM12"));
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(PlatformPorts, ANameWithoutANumberOfItsOwnNeverOpensAnotherPort)
{
    for (const auto& [index, name] : {std::pair{2, "VCP3"}, {3, "CNCA0"}}) {
        messages.shown.clear();
        openAt(index);
        EXPECT_EQ(messages.shown, QStringList("The Commport is error,please change!")) << name;
        EXPECT_EQ(told(), QStringLiteral("%1 cannot be opened: its name does not end in a port number of its "
                                         "own. Choose another port.")
                              .arg(name));
        EXPECT_FALSE(comm.PortOpen());
        EXPECT_EQ(child<QPushButton>(window, "Command1")->text(), "OpenComm");
    }
    EXPECT_EQ(opened, QStringList());
}

} // namespace
} // namespace quorvel::test
