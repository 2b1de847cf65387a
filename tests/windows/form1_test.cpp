#include "windows/form1_by_hand.h"
#include "windows/form1_on_the_bus.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QRadioButton>
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
    const Form1 factory({bench, module1, gate, messages}, ports);
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
    startAs("FACTORY");
    child<QRadioButton>(*form, "Option2")->click();
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
    startAs("FACTORY");
    child<QRadioButton>(*form, "Option3")->click();
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

TEST_F(Form1Window, AnItemThatIsHiddenOpensNothing)
{
    const auto refuses = [this](const QString& name) {
        bool opened = false;
        form->setOpener(name, [&opened] { opened = true; });
        form->showStatus("");
        choose(name);
        return !opened && status() == QStringLiteral("\"%1\" is not offered here.").arg(action(name).text());
    };
    for (const auto* name : {"XD", "YD"}) {
        EXPECT_TRUE(refuses(name)) << name << " in the user edition";
    }
    startAs("FACTORY");
    for (const auto* name : {"ZD", "SL", "Z1_GrayScale_Data"}) {
        EXPECT_TRUE(refuses(name)) << name << " for type A";
    }
    EXPECT_FALSE(refuses("XD"));
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

TEST_F(Form1Window, HelpShowsItsFileAndTheMainWindowWaits)
{
    QFile readme(folder.filePath("readme.txt"));
    ASSERT_TRUE(readme.open(QIODevice::WriteOnly) && readme.write("How to begin\n") > 0);
    readme.close();
    choose("Help");
    auto* help = QApplication::activeModalWidget();
    ASSERT_TRUE(help);
    EXPECT_EQ(help->windowTitle(), "Help");
    EXPECT_EQ(child<QPlainTextEdit>(*help, "Text1")->toPlainText(), "How to begin\n");
    choose("Help");
    EXPECT_EQ(QApplication::activeModalWidget(), help) << "once";
    child<QPushButton>(*help, "Command1")->click();
    EXPECT_FALSE(QApplication::activeModalWidget());
}

TEST_F(Form1Window, TabVisitsAllControlsInTheirOrder)
{
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    child<QRadioButton>(*form, "Option1")->setFocus();
    QStringList visited;
    for (int i = 0; i < 9; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited << QApplication::focusWidget()->objectName();
    }
    EXPECT_EQ(visited, QStringList({"Combo1", "Command1", "Command4", "foundScroll", "Command2", "TestNo",
                                    "List1", "Tools", "Option1"}));
}

TEST_F(Form1Window, ToolsStandAtTheRightEndOfTheStatusBar)
{
    int chosen = 0;
    auto* tool = form->addTool("Something", [&chosen] { ++chosen; });
    tool->trigger();
    QCoreApplication::processEvents();
    EXPECT_EQ(chosen, 1);
    auto& tools = button("Tools");
    EXPECT_EQ(tools.text(), "Tools");
    EXPECT_GT(tools.mapTo(form.get(), QPoint()).x(), form->width() / 2);
    tools.click();
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->actions(), QList<QAction*>{tool});
    menu->close();
}

TEST_F(Form1Window, TheReadOnlyMarkIsHiddenUntilItIsAskedFor)
{
    auto* mark = child<QLabel>(*form, "ReadOnlyMark");
    EXPECT_FALSE(mark->isVisible());
    form->showReadOnly(true);
    EXPECT_TRUE(mark->isVisible());
    EXPECT_TRUE(mark->text().endsWith("Read Only"));
}

TEST_F(Form1Window, Timer1CountsSeconds)
{
    EXPECT_TRUE(QTest::qWaitFor([this] { return form->ElapsedSeconds() >= 1; }, kPatience));
    EXPECT_EQ(form->ElapsedSeconds(), 1);
}

/// The captions of a menu, from top to bottom.
QStringList captionsOf(const Form1& form, const QString& menu)
{
    QStringList captions;
    for (const auto* entry : child<QMenu>(form, menu)->actions()) {
        captions << entry->text();
    }
    return captions;
}

TEST_F(Form1Window, ReadingsAndCalibrationHoldTheirItemsInOrder)
{
    EXPECT_EQ(captionsOf(*form, "Readings"),
              QStringList({"Immediate Reading", "Automatic Readings", "X-GrayScale-Data", "Y-GrayScale-Data",
                           "Z1-GrayScale-Data", "Z2-GrayScale-Data"}));
    EXPECT_EQ(captionsOf(*form, "cal"),
              QStringList({"X Direction", "Y Direction", "Z Direction", "Stitching Location"}));
}

TEST_F(Form1Window, AnyEditionButUserOffersCalibration)
{
    for (const auto* edition : {"SERVICE", "user", "USER ", ""}) {
        startAs(edition);
        EXPECT_TRUE(child<QMenu>(*form, "cal")->menuAction()->isVisible()) << edition;
    }
    startAs("USER");
    EXPECT_FALSE(child<QMenu>(*form, "cal")->menuAction()->isVisible());
}

TEST_F(Form1ByHand, ImmediateReadingOfTheMenuDoesNothingWhileAnotherWindowIsOpen)
{
    mscomm1.setPortOpen(true);
    TestNo().setText("5");
    form.show();
    QDialog other(&form);
    other.setModal(true);
    other.show();
    ASSERT_EQ(QApplication::activeModalWidget(), &other);
    const auto stopLater = [this] { clock.plan(3, [this] { button("Command2").click(); }); };
    stopLater();
    choose("ImmediateReading");
    EXPECT_EQ(clock.passed(), 0) << "a reading ran";
    EXPECT_EQ(status(), "");
    EXPECT_EQ(messages.shown, QStringList());
    other.close();
    stopLater();
    choose("ImmediateReading");
    EXPECT_GE(clock.passed(), 3) << "none ran when the window was closed";
}

/// An address as typed, and what the status bar says of it.
struct HintCase {
    const char* typed;
    const char* hint;
};

TEST_F(Form1Window, AnAddressThatNamesNoReadoutIsToldAsItIsTyped)
{
    constexpr auto kEvery =
        " addresses every readout on the bus: what is set or deleted is set or deleted in all of them. One "
        "readout has an address from 1 to 249.";
    const auto type = [this](const QString& text) {
        TestNo().clear();
        QTest::keyClicks(&TestNo(), text);
    };
    for (const auto& [typed, hint] :
         {HintCase{"255", kEvery}, {"-1", kEvery}, {"250", nullptr}, {"261", " is sent as the address 5."}}) {
        form->showStatus("");
        type(typed);
        EXPECT_EQ(bench.currentAddress, typed);
        if (hint) {
            EXPECT_TRUE(status().startsWith(QStringLiteral("\"%1\"%2").arg(typed, hint)))
                << qPrintable(status());
        } else {
            EXPECT_EQ(status(), "No readout has the address \"250\". Addresses are 1 to 249.");
        }
        type("5");
        EXPECT_EQ(status(), "") << typed;
    }
    type("250");
    TestNo().clear();
    EXPECT_EQ(status(), "") << "a search begins with an empty box";
}

} // namespace
} // namespace quorvel::test
