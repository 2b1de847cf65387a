#include "app/edition.h"
#include "app/openers.h"
#include "app/program.h"
#include "support/bench_on_the_bus.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

namespace quorvel::test {
namespace {

/// What stands in the boxes and lists of a window.
QStringList entriesOf(const QWidget& window)
{
    QStringList entries;
    for (const auto* box : window.findChildren<QLineEdit*>()) {
        entries << box->objectName() + '=' + box->text();
    }
    for (const auto* list : window.findChildren<QComboBox*>()) {
        entries << list->objectName() + '=' + QString::number(list->currentIndex());
    }
    return entries;
}

/// Puts something else into every box and list of a window.
void changeAll(const QWidget& window)
{
    for (auto* box : window.findChildren<QLineEdit*>()) {
        box->setText("77");
    }
    for (auto* list : window.findChildren<QComboBox*>()) {
        list->setCurrentIndex(list->currentIndex() == 0 ? 1 : 0);
    }
}

/// All that the program consists of, its port open to a bus with one readout, of type C.
class SecondShowing : public ::testing::TestWithParam<const char*> {
protected:
    SecondShowing()
    {
        openAutoread(program);
        openSettings(program);
        openCalibration(program);
        program.form1.show();
        child<QLineEdit>(program.form1, "TestNo")->setText("12");
        child<QRadioButton>(program.form1, "Option3")->click();
        child<QPushButton>(program.form1, "Command1")->click();
    }

    /// Chooses the item, does something in the window that comes up, and closes it.
    void inWindowOf(const QString& action, const std::function<void(QWidget&)>& act)
    {
        bool done = false;
        QTimer watcher;
        QObject::connect(&watcher, &QTimer::timeout, &program.form1, [&] {
            auto* window = QApplication::activeModalWidget();
            if (!window || done) return;
            act(*window);
            done = true;
            window->close();
        });
        watcher.start(10);
        child<QAction>(program.form1, action)->trigger();
        EXPECT_TRUE(QTest::qWaitFor([&] { return done; }, 20'000)) << "nothing opened";
    }

    QTemporaryDir folder;
    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "12:C"}};
    quorvel::Program program{{bus.device()}, folder.path().toStdString(), {}, kEdition};
};

TEST_P(SecondShowing, IsLikeTheFirst)
{
    // The stitching location belongs to another type.
    if (GetParam() == std::string("SL")) child<QRadioButton>(program.form1, "Option2")->click();
    QStringList first;
    QStringList changed;
    inWindowOf(GetParam(), [&](QWidget& window) {
        first = entriesOf(window);
        changeAll(window);
        changed = entriesOf(window);
    });
    EXPECT_NE(changed, first);
    EXPECT_EQ(child<QLineEdit>(program.form1, "TestNo")->text(), "12");
    QStringList second;
    inWindowOf(GetParam(), [&](QWidget& window) { second = entriesOf(window); });
    EXPECT_EQ(second, first);
    EXPECT_EQ(bus.frames(), QStringList()) << "showing asks nothing";
}

INSTANTIATE_TEST_SUITE_P(All, SecondShowing,
                         ::testing::Values("ChangeAddress", "WireSetting", "offset", "OS", "fz",
                                           "ClockSetting", "AutomaticReading", "XD", "SL"),
                         [](const auto& instance) { return instance.param; });

} // namespace
} // namespace quorvel::test
