#include "protocol/values.h"
#include "windows/form1_by_hand.h"
#include "windows/form1_on_the_bus.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFile>
#include <QMenu>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStyledItemDelegate>
#include <QTimer>

namespace quorvel::test {
namespace {

/// Readings of readout 5 by hand, its port open.
class ReadingByHand : public Form1ByHand {
protected:
    ReadingByHand()
    {
        mscomm1.setPortOpen(true);
        TestNo().setText("5");
    }

    QStringList lines()
    {
        QStringList lines;
        for (int row = 0; row < List1().count(); ++row) {
            lines << List1().item(row)->text();
        }
        return lines;
    }
    /// Runs the reading and presses "Stop" when `seconds` have passed.
    void readFor(double seconds)
    {
        clock.plan(seconds, [this] { button("Command2").click(); });
        button("Command2").click();
    }
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

/// Counts the lines whose size is asked for.
class CountingDelegate : public QStyledItemDelegate {
public:
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        ++asked;
        return QStyledItemDelegate::sizeHint(option, index);
    }
    mutable int asked = 0;
};

// Half a day of readings: measuring each of them again for a new one would soon take longer than a turn.
TEST_F(ReadingByHand, ManyLinesDoNotMakeTheNextOneSlow)
{
    constexpr int kLines = 4000;
    CountingDelegate delegate;
    List1().setItemDelegate(&delegate);
    form.show();
    clock.plan(1, [&] {
        for (int i = 0; i < kLines; ++i)
            List1().addItem(QStringLiteral("14:05:20    X: +12.3456  Y: -00.0078  "));
        QCoreApplication::processEvents();
        delegate.asked = 0;
    });
    readFor(20);
    EXPECT_EQ(lines().size(), kLines + 2);
    EXPECT_EQ(List1().currentRow(), kLines + 1);
    EXPECT_LT(delegate.asked, kLines / 10);
    List1().setItemDelegate(nullptr);
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

TEST_F(ReadingByHand, ARefusedRunLeavesTheReadingsAsTheyAre)
{
    readFor(10);
    const auto before = lines();
    ASSERT_EQ(before.size(), 1);
    TestNo().setText("250");
    button("Command2").click();
    EXPECT_EQ(lines(), before);
    mscomm1.setPortOpen(false);
    button("Command2").click();
    EXPECT_EQ(lines(), before);
}

TEST_F(ReadingByHand, OtherCommandsAreRefusedMeanwhile)
{
    form.setOpener("offset", [] { ADD_FAILURE() << "a window opened during a reading"; });
    QString meanwhile;
    clock.plan(3, [&] {
        choose("offset");
        meanwhile = status();
    });
    readFor(5);
    EXPECT_EQ(meanwhile, "Immediate Reading is running. Press Stop first.");
}

TEST_F(ReadingByHand, TabGoesRoundWhatCanBeOperatedAndTheKeyboardStopsIt)
{
    activate();
    QStringList forth;
    QStringList back;
    clock.plan(2, [&] {
        forth = roundTrip(Qt::Key_Tab);
        back = roundTrip(Qt::Key_Backtab);
        press(Qt::Key_Space);
    });
    readFor(60);
    EXPECT_EQ(forth,
              QStringList({"TestNo", "List1", "Tools", "Option1", "Combo1", "foundScroll", "Command2"}));
    EXPECT_EQ(back,
              QStringList({"foundScroll", "Combo1", "Option1", "Tools", "List1", "TestNo", "Command2"}));
    EXPECT_LE(clock.passed(), 3.1);
}

TEST_F(ReadingByHand, ARunThatTheMenuStartedHasTheFocusOnStop)
{
    activate();
    child<QRadioButton>(form, "Option1")->setFocus();
    clock.plan(3, [] { press(Qt::Key_Space); });
    clock.plan(60, [this] { button("Command2").click(); });
    choose("ImmediateReading");
    EXPECT_LE(clock.passed(), 4.1);
}

TEST_F(ReadingByHand, KeysElsewhereDoNothingMeanwhile)
{
    activate();
    clock.plan(2, [this] {
        Combo1().setFocus();
        press(Qt::Key_Down);
        press(Qt::Key_F4);
    });
    messages.texts = {"/dev/ttyOther"};
    choose("AddPort");
    Combo1().setCurrentIndex(0);
    readFor(3);
    EXPECT_EQ(Combo1().currentIndex(), 0);
    EXPECT_FALSE(Combo1().view()->isVisible());
}

TEST_F(ReadingByHand, TheTypeMayBeChosenMeanwhile)
{
    form.show();
    clock.plan(3, [this] {
        QTest::mouseClick(child<QRadioButton>(form, "Option3"), Qt::LeftButton, {}, {9, 9});
    });
    readFor(10);
    EXPECT_EQ(lines(), QStringList("14:05:20    X: +12.3456  Y: -00.0078  Z: +12.3456"));
}

TEST_F(ReadingByHand, ReadingsGoOnWhileTheMenuOfTheListIsOpen)
{
    form.show();
    int linesMeanwhile = 0;
    clock.plan(2, [this] {
        // A menu that halts the run would halt the test, too.
        QTimer::singleShot(5000, &form, [] {
            if (auto* menu = QApplication::activePopupWidget()) menu->close();
        });
        QContextMenuEvent rightClick(QContextMenuEvent::Mouse, {5, 5},
                                     List1().viewport()->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(List1().viewport(), &rightClick);
    });
    clock.plan(21, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu);
        linesMeanwhile = List1().count();
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(menu->actions().first()).center());
    });
    readFor(22);
    EXPECT_EQ(linesMeanwhile, 2);
    EXPECT_EQ(QApplication::clipboard()->text(), lines().join('\n'));
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

TEST_F(Form1OnTheBus, FaultsOfTheLineAreCommErrorsOrShownAsReceived)
{
    openPort();
    for (const auto* fault : {"silent@2101:1", "short@2101:1", "long@2101:1"}) {
        bus.fault(fault);
        EXPECT_EQ(protocol::ReadSensorValues(module1, 5, bench), " CommError") << fault;
    }
    bus.fault("garbled@2101:1");
    const auto noise = protocol::ReadSensorValues(module1, 5, bench);
    EXPECT_EQ(noise.size(), 28U) << noise;
    EXPECT_TRUE(noise.starts_with("  X: ")) << noise;
    EXPECT_EQ(noise.substr(13, 5), "  Y: ") << noise;
    const auto good = QString::fromStdString(protocol::ReadSensorValues(module1, 5, bench));
    const QRegularExpression form8(R"(^  X: [+-][\d.]{7}  Y: [+-][\d.]{7}  $)");
    EXPECT_TRUE(form8.match(good).hasMatch()) << qPrintable(good);
}

class ThreeDirections : public Form1OnTheBus {
protected:
    ThreeDirections() : Form1OnTheBus({"--fast", "--readout", "5:C"}) { bench.instrumentType = link::TypeC; }
};

TEST_F(ThreeDirections, ASilentZIsAnEmptyField)
{
    openPort();
    const QRegularExpression whole(R"(^  X: .{8}  Y: .{8}  Z: [+-][\d.]{7}$)");
    EXPECT_TRUE(
        whole.match(QString::fromStdString(protocol::ReadSensorValues(module1, 5, bench))).hasMatch());
    bus.fault("silent@2102");
    const QRegularExpression empty(R"(^  X: .{8}  Y: .{8}  Z: $)");
    EXPECT_TRUE(
        empty.match(QString::fromStdString(protocol::ReadSensorValues(module1, 5, bench))).hasMatch());
}

TEST_F(ReadingByHand, HelpOpensMeanwhileAndReadingsGoOn)
{
    const QTemporaryDir folder;
    QFile readme(folder.filePath("readme.txt"));
    ASSERT_TRUE(readme.open(QIODevice::WriteOnly) && readme.write("How to begin\n") > 0);
    readme.close();
    bench.helpText = readme.fileName().toStdString();
    form.show();
    clock.plan(2, [this] {
        // A viewer that halts the run would halt the test, too.
        QTimer::singleShot(5000, &form, [] {
            if (auto* open = QApplication::activeModalWidget()) open->close();
        });
        choose("Help");
    });
    QPointer<QWidget> help;
    int meanwhile = 0;
    clock.plan(21, [&] {
        help = QApplication::activeModalWidget();
        ASSERT_TRUE(help);
        EXPECT_EQ(help->windowTitle(), "Help");
        meanwhile = List1().count();
        QTest::mouseClick(child<QPushButton>(*help, "Command1"), Qt::LeftButton);
        EXPECT_FALSE(help && help->isVisible());
    });
    readFor(30);
    EXPECT_EQ(meanwhile, 2);
    EXPECT_EQ(lines().size(), 3);
}

TEST_F(ReadingByHand, PressOfThePortButtonBetweenStopAndTheEndDoesNothing)
{
    button("Command1").click(); // closed
    button("Command1").click();
    ASSERT_EQ(openings.size(), 2U);
    const QPointer<FakeDevice> before = device;
    clock.plan(3.2, [this] {
        button("Command2").click();
        EXPECT_EQ(button("Command2").text(), "Stop") << "the loop has not ended";
        EXPECT_FALSE(button("Command1").isEnabled());
        button("Command1").click();
        QTest::mouseClick(&button("Command1"), Qt::LeftButton);
    });
    button("Command2").click();
    EXPECT_LE(clock.passed(), 4.1);
    EXPECT_TRUE(before) << "the port was closed";
    EXPECT_EQ(openings.size(), 2U);
    EXPECT_EQ(button("Command1").text(), "CloseComm");
    EXPECT_TRUE(button("Command1").isEnabled());
}

TEST_F(ReadingByHand, ASecondThatASlowExchangeStepsOverHasNoReading)
{
    // The exchange of 14:05:20 lasts beyond 14:05:30.
    clock.plan(7.05, [this] { clock.move(10); });
    readFor(30);
    ASSERT_EQ(lines().size(), 2);
    EXPECT_TRUE(lines()[0].startsWith("14:05:20  ")) << qPrintable(lines()[0]);
    EXPECT_TRUE(lines()[1].startsWith("14:05:40  ")) << qPrintable(lines()[1]);
}

TEST_F(ReadingByHand, HalfAnAddressIsRoundedUp)
{
    TestNo().setText("5.5");
    readFor(10);
    EXPECT_EQ(device->written, ":062101FF\r\n");
    EXPECT_EQ(lines().size(), 1);
}

} // namespace
} // namespace quorvel::test
