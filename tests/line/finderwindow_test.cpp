#include "line/finderwindow.h"

#include "main/inputfilter.h"
#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QTest>

#include <gmock/gmock.h>

namespace quorvel::line {
namespace {

using test::child;

/// Before a real bus with readouts 5 (type A) and 12 (type C).
class FinderWindowOnTheBus : public test::BenchOnTheBus {
protected:
    FinderWindowOnTheBus()
    {
        child<QSpinBox>(window, "FinderFrom")->setValue(4);
        child<QSpinBox>(window, "FinderTo")->setValue(13);
        window.show();
    }

    QTableWidget& table() { return *child<QTableWidget>(window, "FinderReadouts"); }
    QString cell(int row, int column) { return table().item(row, column)->text(); }
    QString status() { return child<QLabel>(window, "Status")->text(); }
    QPushButton& button(const char* name) { return *child<QPushButton>(window, name); }

    std::vector<std::string> taken;
    FinderWindow window{workplace, [this](const std::vector<std::string>& addresses) { taken = addresses; }};
};

TEST_F(FinderWindowOnTheBus, ListsAddressTimeAndType)
{
    window.start();
    ASSERT_EQ(table().rowCount(), 2);
    EXPECT_EQ(cell(0, 0), "05");
    EXPECT_GE(cell(0, 1).toDouble(), 0);
    EXPECT_EQ(cell(0, 2), "A, B or D");
    EXPECT_EQ(cell(1, 0), "12");
    EXPECT_EQ(cell(1, 2), "C");
    EXPECT_EQ(cell(1, 3), "");
    EXPECT_TRUE(status().startsWith("Readouts found: 2, in ")) << qPrintable(status());
}

TEST_F(FinderWindowOnTheBus, PutsThemIntoTheListOfTheMainWindow)
{
    EXPECT_FALSE(button("FinderTake").isEnabled());
    window.start();
    button("FinderTake").click();
    EXPECT_THAT(taken, testing::ElementsAre("05", "12"));
}

TEST_F(FinderWindowOnTheBus, TheListGrowsWhileItRunsAndStopKeepsIt)
{
    bus.fault("twice@5/76");
    QTimer watcher;
    QString format;
    int rows = 0;
    QObject::connect(&watcher, &QTimer::timeout, &window, [&] {
        if (table().rowCount() == 0 || format.contains("left")) return;
        rows = table().rowCount();
        format = child<QProgressBar>(window, "FinderProgress")->format();
        QTest::mouseClick(&button("FinderStop"), Qt::LeftButton);
    });
    watcher.start(1);
    window.start();
    EXPECT_EQ(rows, 1);
    EXPECT_TRUE(format.startsWith("about ")) << qPrintable(format);
    ASSERT_EQ(table().rowCount(), 1);
    EXPECT_TRUE(cell(0, 3).startsWith("Two readouts with this address?")) << qPrintable(cell(0, 3));
    EXPECT_TRUE(status().endsWith("Stopped before the end.")) << qPrintable(status());
}

TEST_F(FinderWindowOnTheBus, APulledPortEndsItAndIsSaid)
{
    QTimer::singleShot(600, &window, [this] { bus.unplug(); });
    window.start();
    EXPECT_TRUE(status().contains(bus.device() + " is gone")) << qPrintable(status());
    EXPECT_FALSE(gate.busy());
}

TEST_F(FinderWindowOnTheBus, NeedsAnOpenPort)
{
    mscomm1.setPortOpen(false);
    window.start();
    EXPECT_EQ(lastMessage(), "CommPort not Opened");
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(FinderWindowOnTheBus, TheRangeIsAlwaysOne)
{
    auto& from = *child<QSpinBox>(window, "FinderFrom");
    auto& to = *child<QSpinBox>(window, "FinderTo");
    from.setValue(200);
    EXPECT_EQ(to.value(), 200);
    from.setValue(500);
    EXPECT_EQ(to.value(), 249);
    from.setValue(0);
    EXPECT_EQ(from.value(), 1);
}

TEST_F(FinderWindowOnTheBus, EveryControlIsReachedByKeyboard)
{
    window.start();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    child<QSpinBox>(window, "FinderFrom")->setFocus();
    QStringList visited;
    for (int i = 0; i < 5; ++i) {
        visited << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(visited,
              QStringList({"FinderFrom", "FinderTo", "FinderStart", "FinderTake", "FinderReadouts"}));
}

} // namespace
} // namespace quorvel::line
