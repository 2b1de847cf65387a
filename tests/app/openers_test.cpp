#include "app/edition.h"
#include "app/openers.h"
#include "app/program.h"
#include "support/bench_on_the_bus.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

namespace quorvel {

// The edition is a constant of each program.
const char* const kEdition = "FACTORY";

namespace test {
namespace {

/// A menu item, and the window that it opens.
struct Item {
    const char* action;
    const char* type; ///< option button of the instrument type that shows the item
    const char* window;
    const char* title;
    const char* grayscale;   ///< direction that the bench names while the window is open
    const char* calibration; ///< the same for a calibration
};

const Item kItems[] = {
    {"ChangeAddress", "Option1", "quorvel::Form2", "Change Address", "", ""},
    {"WireSetting", "Option1", "quorvel::SetWire", "Set Wire and Calibration Parameter", "", ""},
    {"offset", "Option1", "quorvel::Form51", "Offset Setting", "", ""},
    {"OS", "Option1", "quorvel::Form52", "Reference Setting", "", ""},
    {"fz", "Option1", "quorvel::Form4", "Invert and Swap", "", ""},
    {"ClockSetting", "Option1", "quorvel::SetTime", "Set Clock", "", ""},
    {"ResetSetting", "Option1", "QMessageBox", "QUORVEL", "", ""},
    {"AutomaticReading", "Option1", "quorvel::SetAuto", "Set AutoReading", "", ""},
    {"X_GrayScale_Data", "Option1", "quorvel::GrayScaleChart", "Gray Scale Graph", "X", ""},
    {"Y_GrayScale_Data", "Option1", "quorvel::GrayScaleChart", "Gray Scale Graph", "Y", ""},
    {"Z1_GrayScale_Data", "Option3", "quorvel::GrayScaleChart", "Gray Scale Graph", "Z1", ""},
    {"Z2_GrayScale_Data", "Option3", "quorvel::GrayScaleChart", "Gray Scale Graph", "Z2", ""},
    {"XD", "Option1", "quorvel::calibration::Celebration1", "X向标定", "", "X"},
    {"YD", "Option1", "quorvel::calibration::Celebration1", "Y向标定", "", "Y"},
    {"ZD", "Option3", "quorvel::calibration::Celebration1", "Z向标定", "", "Z"},
    {"SL", "Option2", "quorvel::calibration::Form6", "Y-Direction Stitching", "", ""},
};

/// What was found open, and what the bench named then.
struct Opened {
    QString window;
    QString title;
    QString grayscale;
    QString calibration;
};

/// All that the program consists of, its port open to a bus with one readout, of type C.
class Menus : public ::testing::TestWithParam<Item> {
protected:
    Menus()
    {
        openAutoread(program);
        openSettings(program);
        openCalibration(program);
        openGrayscale(program);
        program.form1.show();
        child<QLineEdit>(program.form1, "TestNo")->setText("12");
        child<QPushButton>(program.form1, "Command1")->click();
        EXPECT_TRUE(program.mscomm1.PortOpen());
    }

    /// Chooses the item, looks at the modal window that comes up, and closes it.
    Opened choose(const QString& action)
    {
        Opened opened;
        QTimer watcher;
        QObject::connect(&watcher, &QTimer::timeout, &program.form1, [&] {
            auto* window = QApplication::activeModalWidget();
            if (!window || (program.gate.busy() && !program.gate.boxOpen())) return;
            opened = {window->metaObject()->className(), window->windowTitle(),
                      program.bench.GrayscaleDirection, program.bench.CalibrationDirection};
            window->close();
        });
        watcher.start(10);
        child<QAction>(program.form1, action)->trigger();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !opened.window.isEmpty(); }, 20'000)) << "nothing opened";
        return opened;
    }

    QTemporaryDir folder;
    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "12:C"}};
    Program program{{bus.device()}, folder.path().toStdString(), {}, kEdition};
};

TEST_P(Menus, ItemOpensItsWindow)
{
    const auto& item = GetParam();
    child<QRadioButton>(program.form1, item.type)->click();
    EXPECT_TRUE(child<QAction>(program.form1, item.action)->isVisible());
    const auto opened = choose(item.action);
    EXPECT_EQ(opened.window, item.window);
    EXPECT_EQ(opened.title, item.title);
    EXPECT_EQ(opened.grayscale, item.grayscale);
    EXPECT_EQ(opened.calibration, item.calibration);
    EXPECT_FALSE(program.gate.busy());
}

INSTANTIATE_TEST_SUITE_P(All, Menus, ::testing::ValuesIn(kItems),
                         [](const auto& instance) { return instance.param.action; });

TEST_F(Menus, HaveNoOtherItems)
{
    std::vector<QString> shown;
    for (const auto* menu : {"Settings", "Readings", "cal"})
        for (const auto* action : child<QMenu>(program.form1, menu)->actions())
            shown.push_back(action->objectName());
    std::vector<QString> expected{"ImmediateReading"};
    for (const auto& item : kItems)
        expected.emplace_back(item.action);
    EXPECT_THAT(shown, ::testing::UnorderedElementsAreArray(expected));
}

/// What stands under "Tools" and opens a window of its own, and that window.
struct Tool {
    const char* name;
    const char* window;
    const char* title;
};

const Tool kTools[] = {
    {"Traffic", "quorvel::line::TrafficPanel", "Traffic"},
    {"Line Health", "quorvel::line::HealthWindow", "Line Health"},
    {"Journal", "quorvel::line::JournalWindow", "Journal"},
    {"Stored Readings", "quorvel::StoredReadings", "Stored Readings"},
    {"Pixels", "quorvel::Pixels", "Pixels"},
    {"Settings ...", "quorvel::SettingsCompare", "Settings"},
};

/// The tool of that name, without the mark of its letter; the menu hangs on no window while it is closed.
QAction* toolNamed(const QString& name)
{
    for (auto* widget : QApplication::allWidgets()) {
        auto* menu = qobject_cast<QMenu*>(widget);
        if (!menu) continue;
        for (auto* action : menu->actions())
            if (action->text().remove(u'&') == name) return action;
    }
    return nullptr;
}

/// The visible window of that class; null when there is none.
QWidget* windowOf(const QString& className)
{
    for (auto* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->metaObject()->className() == className) return window;
    return nullptr;
}

class Tools : public ::testing::Test {
protected:
    Tools()
    {
        addTools(program);
        program.form1.show();
        child<QLineEdit>(program.form1, "TestNo")->setText("12");
        child<QPushButton>(program.form1, "Command1")->click();
    }

    QTemporaryDir folder;
    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "12:C"}};
    Program program{{bus.device()}, folder.path().toStdString(), {}, kEdition};
};

TEST_F(Tools, OpenTheirWindowsOnceWithoutBlockingTheOthers)
{
    for (const auto& tool : kTools) {
        auto* action = toolNamed(tool.name);
        ASSERT_TRUE(action) << tool.name;
        action->trigger();
        ASSERT_TRUE(QTest::qWaitFor([&] { return windowOf(tool.window) != nullptr; }, 20'000)) << tool.name;
        auto* window = windowOf(tool.window);
        EXPECT_EQ(window->windowTitle(), tool.title);
        EXPECT_FALSE(window->isModal()) << tool.name;
        action->trigger();
        QApplication::processEvents();
        EXPECT_EQ(windowOf(tool.window), window) << "a second one opened";
    }
}

TEST_F(Tools, BeginEachTimeWithTheAddressOfTheMainWindow)
{
    struct {
        const char* name;
        const char* window;
        const char* address;
    } const rows[] = {{"Stored Readings", "quorvel::StoredReadings", "Address"},
                      {"Settings ...", "quorvel::SettingsCompare", "SettingsAddress"}};
    for (const auto& row : rows) {
        for (const auto* address : {"12", "5"}) {
            child<QLineEdit>(program.form1, "TestNo")->setText(address);
            toolNamed(row.name)->trigger();
            ASSERT_TRUE(QTest::qWaitFor([&row] { return windowOf(row.window) != nullptr; }, 20'000));
            auto* window = windowOf(row.window);
            EXPECT_EQ(child<QLineEdit>(*window, row.address)->text(), address);
            window->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
}

TEST_F(Tools, StoredReadingsWaitUntilARunningCommandHasEnded)
{
    program.gate.run([] {
        toolNamed("Stored Readings")->trigger();
        QApplication::processEvents();
        EXPECT_EQ(windowOf("quorvel::StoredReadings"), nullptr);
    });
}

} // namespace
} // namespace test
} // namespace quorvel
