#include "windows/form1_by_hand.h"

#include "windows/form1_on_the_bus.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

namespace quorvel::test {
namespace {

class SearchByHand : public Form1ByHand {
protected:
    SearchByHand()
    {
        answers = false;
        button("Command1").click();
    }
};

TEST_F(SearchByHand, TakesAboutTwoAndAHalfSeconds)
{
    button("Command4").click();
    EXPECT_NEAR(clock.passed(), 0.03 + 9 * 0.005 + 2.55, 0.01);
    EXPECT_EQ(NoList(), "No Sensors(or MCU) Found");
    EXPECT_EQ(status(), "Readouts found: 0");
}

TEST_F(SearchByHand, CharactersFromBeforeArePartOfWhatIsRead)
{
    device->receive("xx7");
    clock.plan(1, [this] { device->receive(":0501FF\r\n"); });
    button("Command4").click();
    EXPECT_EQ(NoList(), "07");
}

TEST_F(SearchByHand, TheFoundAddressIsReadBackAsANumber)
{
    clock.plan(1, [this] { device->receive(":0501FF\r\n"); });
    button("Command4").click();
    EXPECT_EQ(TestNo().text(), "05");
    answers = true;
    clock.plan(12, [this] { button("Command2").click(); });
    button("Command2").click();
    EXPECT_EQ(List1().count(), 1);
    EXPECT_EQ(device->written, ":FF01FF\r\n:052101FF\r\n");
}

TEST_F(SearchByHand, APortThatVanishesIsWhatTheStatusTells)
{
    clock.plan(1, [this] { device->vanish(); });
    button("Command4").click();
    EXPECT_EQ(NoList(), "No Sensors(or MCU) Found");
    EXPECT_TRUE(status().startsWith("/dev/ttyFake is gone")) << qPrintable(status());
    EXPECT_EQ(button("Command1").text(), "OpenComm");
}

TEST_F(Form1OnTheBus, SearchFindsBothReadouts)
{
    openPort();
    QString meanwhile;
    QTimer::singleShot(500, form.get(), [&] { meanwhile = NoList(); });
    button("Command4").click();
    EXPECT_EQ(meanwhile, "Searching, please wait......");
    EXPECT_EQ(NoList(), "05,12");
    EXPECT_EQ(TestNo().text(), "05");
    EXPECT_EQ(bench.currentAddress, "05");
    EXPECT_EQ(bus.frames(), QStringList(":FF01FF"));
}

TEST_F(Form1OnTheBus, AnAnswerThatComesTooLateStaysForTheNextCommand)
{
    openPort();
    bus.fault("late@12/01");
    button("Command4").click();
    EXPECT_EQ(NoList(), "05");
    ASSERT_TRUE(QTest::qWaitFor([this] { return mscomm1.InBufferCount() > 0; }, kPatience));
    bus.clearFaults();
    button("Command4").click();
    EXPECT_EQ(NoList(), "12,05");
}

TEST_F(Form1OnTheBus, SearchOfASilentBusFindsNothing)
{
    openPort();
    bus.fault("silent@01");
    button("Command4").click();
    EXPECT_EQ(NoList(), "No Sensors(or MCU) Found");
    EXPECT_EQ(TestNo().text(), "");
}

TEST_F(Form1OnTheBus, SearchNeedsAnOpenPort)
{
    button("Command4").click();
    EXPECT_EQ(lastMessage(), "CommPort not Opened");
    EXPECT_EQ(NoList(), "");
}

TEST_F(Form1OnTheBus, ClicksAndKeysDuringASearchStartNothing)
{
    form->setOpener("offset", [] { ADD_FAILURE() << "a window opened in mid-search"; });
    openPort();
    QString meanwhile;
    QTimer::singleShot(300, form.get(), [&] {
        QTest::mouseClick(&button("Command4"), Qt::LeftButton);
        QTest::mouseClick(&button("Command1"), Qt::LeftButton);
        button("Command1").click();
        button("Command4").click();
        button("Command2").click();
        choose("offset");
        QTest::keyClicks(&TestNo(), "77");
        meanwhile = status();
    });
    button("Command4").click();
    EXPECT_EQ(meanwhile, "Please wait until the running command has ended.");
    EXPECT_EQ(TestNo().text(), "05");
    EXPECT_TRUE(mscomm1.PortOpen());
    EXPECT_EQ(bus.frames(), QStringList(":FF01FF"));
}

// What had answered by then is shown.
TEST_F(Form1OnTheBus, APortPulledDuringASearchEndsIt)
{
    openPort();
    QTimer::singleShot(300, form.get(), [this] { bus.unplug(); });
    button("Command4").click();
    EXPECT_EQ(NoList(), "05,12");
    EXPECT_EQ(button("Command1").text(), "OpenComm");
    EXPECT_FALSE(mscomm1.PortOpen());
    EXPECT_TRUE(status().contains(bus.device() + " is gone")) << qPrintable(status());
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

TEST_F(SearchByHand, ALongListIsReachedAndScrolledByKeyboard)
{
    activate();
    clock.plan(1, [this] {
        for (int address = 1; address <= 249; ++address) {
            device->receive(
                QStringLiteral(":%1FF\r\n").arg(address, 2, 16, QLatin1Char('0')).toUpper().toStdString());
        }
    });
    button("Command4").click();
    EXPECT_TRUE(NoList().endsWith(",248,249"));
    QCoreApplication::processEvents();
    auto& scroll = *child<QScrollArea>(form, "foundScroll");
    auto& bar = *scroll.horizontalScrollBar();
    ASSERT_GT(bar.maximum(), 0);
    button("Command4").setFocus();
    press(Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), &scroll);
    for (int i = 0; i < 1000 && bar.value() < bar.maximum(); ++i) {
        press(Qt::Key_Right);
    }
    EXPECT_EQ(bar.value(), bar.maximum());
    const auto* list = child<QLabel>(form, "NoList");
    const auto end =
        list->mapTo(scroll.viewport(), QPoint(list->fontMetrics().horizontalAdvance(list->text()), 0));
    EXPECT_LE(end.x(), scroll.viewport()->width()) << "the last address is in sight";
}

} // namespace
} // namespace quorvel::test
