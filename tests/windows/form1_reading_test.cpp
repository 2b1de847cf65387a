#include "support/fake_device.h"
#include "support/hand_clock.h"
#include "windows/form1_on_the_bus.h"

#include <QRegularExpression>
#include <QTimer>

namespace quorvel::test {
namespace {

/// The real window on a clock moved by hand and a device without hardware.
class ReadingByHand : public ::testing::Test {
protected:
    ReadingByHand()
    {
        clock.startNow = QDateTime(QDate(2024, 5, 17), QTime(14, 5, 13));
        mscomm1.setPortOpen(true);
        device->onCharacter = [this](char c) {
            if (c == '\n' && answers) device->receive(":052101+12.3456-00.0078FF\r\nxx");
        };
        TestNo().setText("5");
    }

    QPushButton& button(const QString& name) { return *child<QPushButton>(form, name); }
    QLineEdit& TestNo() { return *child<QLineEdit>(form, "TestNo"); }
    QStringList lines()
    {
        QStringList lines;
        const auto& list = *child<QListWidget>(form, "List1");
        for (int row = 0; row < list.count(); ++row) {
            lines << list.item(row)->text();
        }
        return lines;
    }
    /// Runs the reading and presses "Stop" when `seconds` have passed.
    void readFor(double seconds)
    {
        clock.plan(seconds, [this] { button("Command2").click(); });
        button("Command2").click();
    }

    FakeDevice* device = nullptr;
    bool answers = true;
    HandClock clock;
    link::Bench bench;
    link::PortList ports{{"/dev/ttyFake"}, [] { return std::vector<link::PortInfo>(); }};
    link::MSComm mscomm1{ports, [this](const QString&, const link::LineSettings&) {
                             auto opened = std::make_unique<FakeDevice>();
                             device = opened.get();
                             return link::OpenedDevice{std::move(opened), {}};
                         }};
    link::Module1 module1{mscomm1, clock};
    link::Gate gate;
    TestMessages messages;
    Form1 form{bench, ports, module1, gate, messages};
};

TEST_F(ReadingByHand, TakesAReadingWhenTheSecondsEndInZero)
{
    readFor(30);
    ASSERT_EQ(lines().size(), 3);
    EXPECT_EQ(lines()[0], "14:05:20    X: +12.3456  Y: -00.0078  ");
    EXPECT_TRUE(lines()[1].startsWith("14:05:30  ")) << qPrintable(lines()[1]);
    EXPECT_TRUE(lines()[2].startsWith("14:05:40  ")) << qPrintable(lines()[2]);
    EXPECT_EQ(child<QListWidget>(form, "List1")->currentRow(), 2);
}

TEST_F(ReadingByHand, StopEndsItWithinASecond)
{
    clock.plan(5, [this] {
        EXPECT_EQ(button("Command2").text(), "Stop");
        EXPECT_FALSE(button("Command1").isEnabled());
        EXPECT_FALSE(button("Command4").isEnabled());
    });
    readFor(5.5);
    EXPECT_LE(clock.passed(), 6.6);
    EXPECT_EQ(button("Command2").text(), "Immediate Reading");
    EXPECT_TRUE(button("Command1").isEnabled());
    EXPECT_TRUE(button("Command4").isEnabled());
}

TEST_F(ReadingByHand, TheMenuItemIsTheSameToggle)
{
    auto* item = child<QAction>(form, "ImmediateReading");
    clock.plan(12, [item] { item->trigger(); });
    item->trigger();
    QCoreApplication::processEvents();
    EXPECT_EQ(lines().size(), 1);
    EXPECT_EQ(button("Command2").text(), "Immediate Reading");
}

TEST_F(ReadingByHand, ASilentReadoutGivesCommErrorLinesAndTheReadingGoesOn)
{
    answers = false;
    clock.plan(15, [this] { answers = true; });
    readFor(20);
    ASSERT_EQ(lines().size(), 2);
    EXPECT_EQ(lines()[0], "14:05:20   CommError");
    EXPECT_EQ(lines()[1], "14:05:30    X: +12.3456  Y: -00.0078  ");
}

TEST_F(ReadingByHand, TheAddressIsReadAnewForEachReading)
{
    clock.plan(10, [this] { TestNo().setText("12.4"); });
    readFor(20);
    EXPECT_TRUE(device->written.find(":052101FF\r\n") != std::string::npos);
    EXPECT_TRUE(device->written.find(":0C2101FF\r\n") != std::string::npos) << device->written;
}

TEST_F(ReadingByHand, EachRunStartsWithAnEmptyList)
{
    readFor(20);
    EXPECT_EQ(lines().size(), 2);
    readFor(2);
    EXPECT_EQ(lines().size(), 0);
}

TEST_F(ReadingByHand, AddressesThatNoReadoutHasAreRefused)
{
    for (const auto* address : {"0", "250", "", "abc", "-5", "249.6", "0.4"}) {
        messages.shown.clear();
        TestNo().setText(address);
        button("Command2").click();
        EXPECT_EQ(messages.shown, QStringList("Address Error")) << address;
        EXPECT_EQ(button("Command2").text(), "Immediate Reading");
    }
}

TEST_F(ReadingByHand, AClosedPortIsRefused)
{
    mscomm1.setPortOpen(false);
    TestNo().setText("0");
    button("Command2").click();
    EXPECT_EQ(messages.shown, QStringList("CommPort not Opened"));
}

TEST_F(ReadingByHand, AVanishedPortEndsTheRunAndSaysWhy)
{
    clock.plan(9, [this] { device->vanish(); });
    button("Command2").click();
    EXPECT_LE(clock.passed(), 10.1);
    EXPECT_EQ(button("Command2").text(), "Immediate Reading");
    EXPECT_EQ(button("Command1").text(), "OpenComm");
    EXPECT_TRUE(button("Command1").isEnabled());
    EXPECT_TRUE(child<QLabel>(form, "Status")->text().contains("is gone"));
}

TEST_F(ReadingByHand, ClosingTheWindowEndsTheRunFirst)
{
    InputFilter filter(gate);
    qApp->installEventFilter(&filter);
    form.show();
    clock.plan(3, [this] {
        form.close();
        EXPECT_TRUE(form.isVisible());
    });
    button("Command2").click();
    EXPECT_LE(clock.passed(), 4.1);
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(mscomm1.PortOpen());
}

TEST_F(Form1OnTheBus, ReadsTheSimulatedReadout)
{
    openPort();
    TestNo().setText("12");
    QTimer stop;
    QObject::connect(&stop, &QTimer::timeout, form.get(), [&] {
        if (List1().count() > 0) button("Command2").click();
    });
    stop.start(100);
    button("Command2").click();
    ASSERT_EQ(List1().count(), 1);
    const QRegularExpression form8(R"(^\d\d:\d\d:\d0    X: [+-][\d.]{7}  Y: [+-][\d.]{7}  $)");
    EXPECT_TRUE(form8.match(List1().item(0)->text()).hasMatch()) << qPrintable(List1().item(0)->text());
    EXPECT_EQ(bus.frames(), QStringList(":0C2101FF"));
}

} // namespace
} // namespace quorvel::test
