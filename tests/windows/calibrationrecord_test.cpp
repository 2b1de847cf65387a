#include "calibration/calibrationrecord.h"
#include "calibration/celebration1.h"
#include "support/bench_on_the_bus.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>

namespace quorvel::test {
namespace {

using namespace calibration;

/// The window before readouts 5 and 12, of which the wire of 5 stands where it is put.
class CalibrationRecordWindow : public BenchOnTheBus {
protected:
    CalibrationRecordWindow()
    {
        bench.edition = "FACTORY";
        window = std::make_unique<CalibrationRecord>(workplace);
        window->show();
    }

    QLineEdit& field(const char* name) { return *child<QLineEdit>(*window, name); }
    QPushButton& button(const char* name) { return *child<QPushButton>(*window, name); }
    QTableWidget& table() { return *child<QTableWidget>(*window, "Points"); }
    QString cell(int row, int column) { return table().item(row, column)->text(); }
    QString status() { return child<QLabel>(*window, "Status")->text(); }
    QString judgement() { return child<QPlainTextEdit>(*window, "Judgement")->toPlainText(); }
    void choose(const char* run) { child<QAbstractButton>(*window, run)->click(); }
    void put(double place) { bus.command(QStringLiteral("set 5 x %1").arg(place)); }

    void typeAndReturn(const QString& text)
    {
        QTest::keyClicks(&field("Dial"), text);
        QTest::keyClick(&field("Dial"), Qt::Key_Return);
    }
    void takeAll()
    {
        for (int i = 0; i < 11; ++i) {
            put(10 + 0.5 * i);
            typeAndReturn(QString::number(0.25 * i));
        }
    }
    QString inFolder(const QString& name) const { return folder.filePath(name); }

    std::unique_ptr<CalibrationRecord> window;
};

TEST_F(CalibrationRecordWindow, OpeningMakesNoFile)
{
    EXPECT_EQ(window->windowTitle(), "Calibration Record");
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
    EXPECT_TRUE(status().contains("Move the wire to point 0, type the dial reading, press Return."))
        << qPrintable(status());
    EXPECT_EQ(judgement(), "As found: not taken.\nMeasured: not taken.\nAs left: not taken.");
}

TEST_F(CalibrationRecordWindow, GoesFromMeasuredToLeftAndSavesItsPage)
{
    child<QSpinBox>(*window, "Repeats")->setValue(3);
    takeAll();
    EXPECT_EQ(cell(4, 1), "1");
    EXPECT_EQ(cell(4, 2), "12.000");
    EXPECT_EQ(cell(4, 3), "3");
    EXPECT_EQ(cell(4, 6), "0.0000");
    EXPECT_TRUE(child<QLabel>(*window, "Numbers")->text().startsWith("X_Data: Y=2.0000*X+(10.000)"));
    EXPECT_TRUE(status().contains("Next: \"Download ...\".")) << qPrintable(status());
    bus.frames();

    messages.answers = {true};
    button("Download").click();
    EXPECT_TRUE(lastMessage().startsWith("Send the measured points to readout 5?"));
    ASSERT_EQ(bus.frames().size(), 1);
    EXPECT_TRUE(status().startsWith("Readout 5 took the table of X_Data and repeated it"))
        << qPrintable(status());

    choose("left");
    takeAll();
    field("Tolerance").setText("0.01");
    QTest::keyClick(&field("Tolerance"), Qt::Key_Tab);
    messages.files = {inFolder("r.pdf")};
    button("SaveRecord").click();
    EXPECT_EQ(status(), "Saved as " + inFolder("r.pdf") + ".");
    EXPECT_TRUE(judgement().contains("As left: pass: worst error 0.0000 mm")) << qPrintable(judgement());
    QFile page(inFolder("r.pdf"));
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    EXPECT_TRUE(page.readAll().startsWith("%PDF-"));
}

TEST_F(CalibrationRecordWindow, PointsOfAnotherReadoutAreSentOnlyAfterAQuestion)
{
    takeAll();
    field("Address").setText("12");
    EXPECT_TRUE(status().startsWith("The points were measured at readout 5, the address is 12"))
        << qPrintable(status());
    bus.frames();
    button("Download").click();
    EXPECT_EQ(lastMessage(),
              "The points were measured at readout 5, the address is 12: they are not this readout's.\nSend "
              "them to readout 12 all the same?");
    EXPECT_TRUE(bus.frames().isEmpty());
    messages.answers = {true};
    button("Download").click();
    EXPECT_EQ(bus.frames().size(), 1);
}

TEST_F(CalibrationRecordWindow, SwitchingOffAsksWithItsReason)
{
    button("SwitchOff").click();
    EXPECT_TRUE(lastMessage().startsWith("A readout that has a table corrects what it reads."))
        << qPrintable(lastMessage());
    EXPECT_TRUE(bus.frames().isEmpty());
    messages.answers = {true};
    button("SwitchOff").click();
    ASSERT_EQ(bus.frames().size(), 1);
    EXPECT_TRUE(status().contains("table of zeros")) << qPrintable(status());
}

TEST_F(CalibrationRecordWindow, ArrowsChooseThePointAndGoingDownTurnsTheOrder)
{
    QTest::keyClick(&field("Dial"), Qt::Key_Down);
    QTest::keyClick(&field("Dial"), Qt::Key_Down);
    EXPECT_EQ(table().currentRow(), 2);
    QTest::keyClick(&field("Dial"), Qt::Key_Up);
    EXPECT_EQ(table().currentRow(), 1);
    child<QCheckBox>(*window, "Down")->click();
    EXPECT_EQ(table().currentRow(), 10);
    put(15);
    typeAndReturn("2.5");
    EXPECT_EQ(table().currentRow(), 9);
    EXPECT_EQ(cell(10, 2), "15.000");
}

TEST_F(CalibrationRecordWindow, WhatIsTypedWhileTheReadoutAnswersIsTakenNext)
{
    put(10);
    bool typed = false;
    const auto type = [&] {
        if (std::exchange(typed, true)) return;
        typeAndReturn("0.25");
    };
    QTimer::singleShot(20, window.get(), type);
    typeAndReturn("0");
    EXPECT_TRUE(typed) << "while the first was measured";
    EXPECT_EQ(cell(0, 1), "0");
    EXPECT_EQ(cell(1, 1), "0.25");
    EXPECT_EQ(table().currentRow(), 2);
}

TEST_F(CalibrationRecordWindow, AnotherDirectionOrRunChosenWhileThePointIsMeasuredWaits)
{
    put(10);
    bus.fault("silent@2101:1");
    auto& direction = *child<QComboBox>(*window, "Direction");
    const bool able = direction.isEnabled();
    QTimer::singleShot(20, window.get(), [&] {
        EXPECT_TRUE(status().startsWith("Measuring point 0")) << qPrintable(status());
        EXPECT_FALSE(direction.isEnabled());
    });
    QTimer::singleShot(20, window.get(), [&] { choose("left"); });
    typeAndReturn("0.5");
    EXPECT_TRUE(able && direction.isEnabled());
    EXPECT_TRUE(status().startsWith("Point 0: Nothing was measured")) << qPrintable(status());
    EXPECT_EQ(field("Dial").text(), "0.5");
    EXPECT_TRUE(child<QAbstractButton>(*window, "measured")->isChecked()) << "that the point belongs to";
}

TEST_F(CalibrationRecordWindow, WhatIsNoNumberOrNotAnsweredStaysToBeTypedAgain)
{
    typeAndReturn("abc");
    EXPECT_TRUE(status().startsWith("\"abc\" is not a dial reading")) << qPrintable(status());
    field("Dial").clear();
    bus.fault("silent@2101:1");
    typeAndReturn("0.5");
    EXPECT_TRUE(status().startsWith("Point 0: Nothing was measured: the readout did not answer."))
        << qPrintable(status());
    EXPECT_EQ(table().currentRow(), 0);
    EXPECT_EQ(field("Dial").text(), "0.5");
    QTest::keyClick(&field("Dial"), Qt::Key_Return);
    EXPECT_EQ(cell(0, 1), "0.5");
}

TEST_F(CalibrationRecordWindow, AnAdapterThatIsPulledWhileAPointIsMeasuredIsNamed)
{
    bus.fault("silent@*");
    QTimer::singleShot(100, window.get(), [&] { bus.unplug(); });
    typeAndReturn("0.5");
    EXPECT_TRUE(status().contains(bus.device() + " is gone")) << qPrintable(status());
    EXPECT_FALSE(status().contains("Check the address")) << qPrintable(status());
    EXPECT_EQ(field("Dial").text(), "0.5");
    QTest::keyClick(&field("Dial"), Qt::Key_Return);
    EXPECT_TRUE(status().startsWith("Nothing was measured: the port is closed.")) << qPrintable(status());
}

TEST_F(CalibrationRecordWindow, LiveValueBecomesSteady)
{
    put(10);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    child<QCheckBox>(*window, "LiveOn")->click();
    auto& value = *child<QLabel>(*window, "Live");
    EXPECT_TRUE(QTest::qWaitFor([&] { return value.text() == "10.000 mm  steady"; }, 20000))
        << qPrintable(value.text());
    put(10.5);
    EXPECT_TRUE(QTest::qWaitFor([&] { return value.text() == "10.500 mm  moves by 0.5000 mm"; }, 20000));
    bus.fault("silent@*");
    EXPECT_TRUE(QTest::qWaitFor([&] { return value.text() == "no answer"; }, 20000));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&value)->text(QAccessible::Name), "no answer");
}

TEST_F(CalibrationRecordWindow, AnotherDirectionChosenDuringALiveValueIsOpenedAfterIt)
{
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    bus.fault("silent@*");
    child<QCheckBox>(*window, "LiveOn")->click();
    QString before;
    QTimer whileItAsks;
    QObject::connect(&whileItAsks, &QTimer::timeout, [&] {
        if (!gate.busy() || !before.isEmpty()) return;
        child<QComboBox>(*window, "Direction")->setCurrentIndex(1);
        before = status();
        child<QCheckBox>(*window, "LiveOn")->click();
    });
    whileItAsks.start(5);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !before.isEmpty() && !gate.busy(); }, 20000));
    EXPECT_TRUE(before.contains("XDirection.mdb")) << qPrintable(before);
    EXPECT_TRUE(status().contains("YDirection.mdb")) << qPrintable(status());
}

TEST_F(CalibrationRecordWindow, WhatAnotherProgramWroteOfTheRecordIsShownAndStays)
{
    CalibrationRecord other(workplace);
    child<QLineEdit>(other, "Person")->setText("A. Smith");
    QTest::keyClick(child<QLineEdit>(other, "Person"), Qt::Key_Return);
    field("Gauge").setText("dial 7");
    QEvent activated(QEvent::WindowActivate);
    QApplication::sendEvent(window.get(), &activated);
    EXPECT_EQ(field("Person").text(), "A. Smith");
    EXPECT_EQ(field("Gauge").text(), "dial 7") << "typed, not kept yet";
    QTest::keyClick(&field("Gauge"), Qt::Key_Return);
    CalibrationRecord third(workplace);
    EXPECT_EQ(child<QLineEdit>(third, "Person")->text(), "A. Smith");
    EXPECT_EQ(child<QLineEdit>(third, "Gauge")->text(), "dial 7");
}

TEST_F(CalibrationRecordWindow, DetailsAreKeptAndWrongOnesAreNot)
{
    field("Person").setText("张伟");
    field("Tolerance").setText("0.02");
    field("Tolerance").setFocus();
    QTest::keyClick(&field("Tolerance"), Qt::Key_Return);
    field("Tolerance").setText("wide");
    QTest::keyClick(&field("Tolerance"), Qt::Key_Return);
    EXPECT_TRUE(status().startsWith("Permitted error and \"Steady within\" are numbers above 0"))
        << qPrintable(status());
    window = std::make_unique<CalibrationRecord>(workplace);
    EXPECT_EQ(field("Person").text(), "张伟");
    EXPECT_EQ(field("Tolerance").text(), "0.02");
}

TEST_F(CalibrationRecordWindow, ARefusedNumberLosesNothingElseThatWasTyped)
{
    field("Tolerance").setText("0.02");
    QTest::keyClick(&field("Tolerance"), Qt::Key_Return);
    for (const auto* wrong : {"0,05", "1E400", "nan", "0", "-0.1", "\uFF10.\uFF15", "0.05 mm", "inf"}) {
        field("Tolerance").setText(wrong);
        field("Gauge").setText(QStringLiteral("gauge %1").arg(wrong));
        messages.files = {inFolder("r.json")};
        button("SaveRecord").click();
        EXPECT_TRUE(status().startsWith("Permitted error and \"Steady within\" are numbers above 0"))
            << wrong << ": " << qPrintable(status());
        EXPECT_FALSE(QFile::exists(inFolder("r.json"))) << "with a permitted error that nobody meant";
        window->close();
        EXPECT_TRUE(lastMessage().endsWith("Close the window all the same?")) << qPrintable(lastMessage());
        EXPECT_TRUE(window->isVisible());
        window = std::make_unique<CalibrationRecord>(workplace);
        window->show();
        EXPECT_EQ(field("Tolerance").text(), "0.02");
        EXPECT_EQ(field("Gauge").text(), QStringLiteral("gauge %1").arg(wrong));
    }
}

TEST_F(CalibrationRecordWindow, WhatAWriteProtectedRecordDoesNotTakeIsSaidAndStillSaved)
{
    takeAll();
    const auto record = inFolder("XDirection.record.json");
    ASSERT_TRUE(QFile::setPermissions(record, QFile::ReadOwner));
    put(20);
    typeAndReturn("2.5");
    EXPECT_TRUE(status().startsWith("Point 10: It is in the table, but not in the record. "))
        << qPrintable(status());
    EXPECT_EQ(cell(10, 2), "20.000");
    field("Person").setText("A. Smith");
    QTest::keyClick(&field("Person"), Qt::Key_Return);
    EXPECT_TRUE(status().contains("is write-protected")) << qPrintable(status());
    for (const auto* name : {"r.json", "again.json"}) {
        messages.files = {inFolder(name)};
        button("SaveRecord").click();
        EXPECT_TRUE(status().startsWith("Saved as " + inFolder(name))) << qPrintable(status());
        EXPECT_TRUE(status().contains("is write-protected")) << qPrintable(status());
        QFile saved(inFolder(name));
        ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
        EXPECT_TRUE(saved.readAll().contains("A. Smith"));
    }
    window->close();
    EXPECT_TRUE(window->isVisible()) << "No to the question whether to lose that";
    ASSERT_TRUE(QFile::setPermissions(record, QFile::ReadOwner | QFile::WriteOwner));
    window->close();
    EXPECT_FALSE(window->isVisible());
    window = std::make_unique<CalibrationRecord>(workplace);
    EXPECT_EQ(field("Person").text(), "A. Smith");
}

TEST_F(CalibrationRecordWindow, NewTableEmptiesThePointsAfterAQuestion)
{
    takeAll();
    button("NewTable").click();
    EXPECT_EQ(cell(0, 2), "10.000");
    messages.answers = {true};
    button("NewTable").click();
    EXPECT_EQ(cell(0, 2), "");
    EXPECT_TRUE(status().startsWith("A new table was begun. The earlier one is kept as "))
        << qPrintable(status());
}

TEST_F(CalibrationRecordWindow, AFileThatTheCalibrationWindowHoldsIsSaidAndTheReadingComesWithTheNextReturn)
{
    takeAll();
    bench.CalibrationDirection = "X";
    auto other = std::make_unique<Celebration1>(workplace);
    auto* model = child<QTableView>(*other, "DBGrid1")->model();
    put(20);
    typeAndReturn("2.5");
    EXPECT_TRUE(status().startsWith("Point 10: ") && status().contains("XDirection.mdb"))
        << qPrintable(status());
    EXPECT_EQ(field("Dial").text(), "2.5");
    EXPECT_EQ(model->index(10, 2).data().toString(), "15");
    other.reset();
    QTest::keyClick(&field("Dial"), Qt::Key_Return);
    EXPECT_EQ(cell(10, 2), "20.000");
}

TEST_F(CalibrationRecordWindow, ClosingWhileAPointIsMeasuredWaitsAndLeavesThePointAsItWas)
{
    typeAndReturn("0");
    child<QSpinBox>(*window, "Repeats")->setValue(50);
    QTimer::singleShot(50, window.get(), [&] {
        window->close();
        EXPECT_TRUE(window->isVisible()) << "until the answer that is under way";
    });
    typeAndReturn("0.25");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(cell(0, 3), "1");
    EXPECT_EQ(cell(1, 3), "");
}

TEST_F(CalibrationRecordWindow, LeavesTheFileFreeForTheCalibrationWindow)
{
    takeAll();
    bench.CalibrationDirection = "X";
    Celebration1 other(workplace);
    auto* model = child<QTableView>(other, "DBGrid1")->model();
    EXPECT_EQ(model->index(4, 2).data().toString(), "12");
    EXPECT_TRUE(model->setData(model->index(4, 2), "12.5"));
    EXPECT_FALSE(child<QLabel>(other, "Status")->text().contains("not changed"));
}

} // namespace
} // namespace quorvel::test
