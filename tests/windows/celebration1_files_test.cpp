#include "autoread/largest_file.h"
#include "calibration/older_file.h"
#include "windows/celebration1_on_the_bus.h"

#include <QDir>
#include <QFile>
#include <QProcess>

namespace quorvel::test {
namespace {

class Celebration1Files : public Celebration1OnTheBus {
protected:
    static QByteArray contentOf(const QString& name)
    {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
        return file.readAll();
    }
    static void write(const QString& name, const QByteArray& content)
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
};

TEST_F(Celebration1Files, SavingAppendsTheEndingAlways)
{
    open("X");
    for (const auto* name : {"cal1", "cal1.mdb"}) {
        messages.files = {inFolder(name)};
        button("Command4").click();
    }
    EXPECT_EQ(contentOf(inFolder("cal1.mdb")), contentOf(inFolder("XDirection.mdb")));
    EXPECT_EQ(contentOf(inFolder("cal1.mdb.mdb")), contentOf(inFolder("XDirection.mdb")));
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_EQ(grid().model()->rowCount(), 11) << "the table is bound again";
}

TEST_F(Celebration1Files, SavingToNowhereSaysSoInTheStatusLine)
{
    open("X");
    messages.files = {inFolder("no folder/cal1")};
    button("Command4").click();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_TRUE(status().contains("could not be written")) << qPrintable(status());
    EXPECT_EQ(grid().model()->rowCount(), 11);
}

TEST_F(Celebration1Files, CancellingChangesNothing)
{
    open("X");
    button("Command3").click();
    button("Command4").click();
    EXPECT_EQ(status(), standing());
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_EQ(grid().model()->rowCount(), 11);
}

TEST_F(Celebration1Files, LoadingWhatIsNoCalibrationFileSaysWhyInTheStatusLine)
{
    open("X");
    const auto before = contentOf(inFolder("XDirection.mdb"));
    write(inFolder("text.mdb"), "no database");
    for (const auto* name : {"text.mdb", "missing.mdb"}) {
        messages.files = {inFolder(name)};
        button("Command3").click();
        EXPECT_TRUE(status().contains(name)) << qPrintable(status());
        EXPECT_EQ(grid().model()->rowCount(), 11);
    }
    EXPECT_TRUE(messages.shown.isEmpty());
    window.reset();
    EXPECT_EQ(contentOf(inFolder("XDirection.mdb")), before);
}

TEST_F(Celebration1Files, LoadingAnotherDirectionWarns)
{
    open("Y");
    fill({1, 2});
    open("X");
    messages.files = {inFolder("YDirection.mdb")};
    button("Command3").click();
    EXPECT_TRUE(status().contains("Y_Data, not X_Data")) << qPrintable(status());
    button("Command2").click();
    EXPECT_EQ(lastMessage(), "X: Y=1.0000*X+(0.000)\r\nNonlinear Error: 0.000, Max Error: 0.000");
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "Some Data is empty, Please check!");
    EXPECT_TRUE(status().contains("no column X_Data")) << qPrintable(status());
}

TEST_F(Celebration1Files, MeasuringIntoAnotherDirectionsFileTellsWhatItLacks)
{
    open("X");
    bench.currentAddress = "33";
    put(33, "z1", 5);
    open("Z");
    messages.files = {inFolder("XDirection.mdb")};
    button("Command3").click();
    EXPECT_TRUE(status().contains("X_Data, not Z1_Data and Z2_Data")) << qPrintable(status());
    measure(0);
    EXPECT_EQ(cell(0, 2), "5");
    EXPECT_TRUE(status().contains("no column Z2_Data")) << qPrintable(status());
    EXPECT_EQ(grid().currentIndex(), grid().model()->index(0, 2));
}

TEST_F(Celebration1Files, FileThatCannotBeCreatedIsToldAndAnotherCanBeLoaded)
{
    open("X");
    window.reset();
    bench.programFolder = inFolder("gone").toStdString();
    open("X");
    EXPECT_EQ(grid().model()->rowCount(), 0);
    const auto reason = status();
    EXPECT_TRUE(reason.contains(inFolder("gone/XDirection.mdb"))) << qPrintable(reason);
    EXPECT_EQ(window->focusWidget(), &grid());
    button("Command2").click();
    EXPECT_EQ(status(), reason);

    QDir(folder.path()).mkdir("gone");
    messages.files = {inFolder("XDirection.mdb")};
    button("Command3").click();
    ASSERT_EQ(grid().model()->rowCount(), 11) << qPrintable(status());
    EXPECT_EQ(grid().currentIndex(), grid().model()->index(0, 1));
    put(5, "x", 7);
    measure(0);
    EXPECT_EQ(cell(0, 2), "7");
    EXPECT_TRUE(status().startsWith(standing() + ". Points: readout 5, ")) << qPrintable(status());
}

// Another program's change: the four bytes of one number, and mdb-export agrees about it.
TEST_F(Celebration1Files, FileThatAnotherProgramEditedIsLoaded)
{
    open("X");
    fill({1, 2});
    goTo(4, 1);
    enter("0.123");
    messages.files = {inFolder("edited")};
    button("Command4").click();
    auto content = contentOf(inFolder("edited.mdb"));
    const auto bytesOf = [](float number) {
        return QByteArray(reinterpret_cast<const char*>(&number), sizeof number);
    };
    ASSERT_EQ(content.count(bytesOf(0.123F)), 1);
    write(inFolder("edited.mdb"), content.replace(bytesOf(0.123F), bytesOf(-4.5F)));
    QProcess reader;
    reader.start("mdb-export", {inFolder("edited.mdb"), "Calibration"});
    ASSERT_TRUE(reader.waitForFinished()) << "mdb-export is missing";
    EXPECT_TRUE(reader.readAllStandardOutput().contains("\n4,-4.5,4\n"));

    messages.files = {inFolder("edited.mdb")};
    button("Command3").click();
    EXPECT_EQ(cell(4, 1), "-4.5");
    goTo(4, 2);
    enter("5.5");
    window.reset();
    EXPECT_EQ(rowsOf(inFolder("XDirection.mdb"))[4], "4 -4.5 5.5");
}

TEST_F(Celebration1Files, ChartOfTheFitOutlivesSavingAndEndsWithItsPoints)
{
    open("X");
    auto& chart = *child<calibration::FitChart>(*window, "FitChart");
    const auto fit = [&] {
        fill({1, 2});
        button("Command2").click();
        EXPECT_EQ(chart.count(), 1);
    };
    fit();
    messages.files = {inFolder("cal1")};
    button("Command4").click();
    EXPECT_EQ(chart.count(), 1);
    goTo(0, 1);
    enter("0.5");
    EXPECT_EQ(chart.count(), 0) << "a number has changed";
    fit();
    messages.files = {inFolder("missing.mdb")};
    button("Command3").click();
    EXPECT_EQ(chart.count(), 1) << "the points are the same";
    messages.files = {inFolder("cal1.mdb")};
    button("Command3").click();
    EXPECT_EQ(chart.count(), 0);
    fit();
    window->AddCalibrationRow();
    EXPECT_EQ(chart.count(), 0);
}

TEST_F(Celebration1Files, WorkingFileThatCannotBeReadIsNeverOverwritten)
{
    write(inFolder("XDirection.mdb"), "years of work, garbled");
    open("X");
    EXPECT_TRUE(status().contains("XDirection.mdb")) << qPrintable(status());
    EXPECT_EQ(grid().model()->rowCount(), 0);
    const auto reason = status();
    for (const auto* name : {"Command1", "Command2"}) {
        button(name).click();
        EXPECT_EQ(lastMessage(), "Some Data is empty, Please check!");
        EXPECT_EQ(status(), reason) << name;
    }
    window->AddCalibrationRow();
    window->DeleteLastCalibrationRow();
    window.reset();
    EXPECT_EQ(contentOf(inFolder("XDirection.mdb")), "years of work, garbled");
}

TEST_F(Celebration1Files, OlderFileIsEditedAndTheOriginalKept)
{
    const auto older = QByteArray::fromStdString(calibration::olderFile());
    write(inFolder("XDirection.mdb"), older);
    open("X");
    EXPECT_EQ(cell(10, 1), "10");
    fill({1, 2});
    EXPECT_TRUE(status().contains("XDirection.older.mdb")) << qPrintable(status());
    EXPECT_EQ(contentOf(inFolder("XDirection.older.mdb")), older);
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "X向标定参数下载完毕！");
    EXPECT_TRUE(status().contains("XDirection.older.mdb"))
        << "it is still to be known: " << qPrintable(status());

    write(inFolder("older.mdb"), older);
    messages.files = {inFolder("older.mdb")};
    button("Command3").click();
    EXPECT_TRUE(
        status().startsWith("Loaded " + inFolder("older.mdb") + ". The points that were there are kept as "))
        << qPrintable(status());
    goTo(0, 1);
    enter("1.5");
    EXPECT_TRUE(status().contains("XDirection.older-2.mdb")) << qPrintable(status());
    EXPECT_EQ(contentOf(inFolder("XDirection.older-2.mdb")), older);
}

TEST_F(Celebration1Files, OlderFileMayLoseItsTextsWhileItIsEdited)
{
    write(inFolder("ZDirection.mdb"), QByteArray::fromStdString(calibration::olderFileOfZ()));
    open("Z");
    EXPECT_EQ(cell(2, 3), "morning");
    activate();
    goTo(2, 1);
    enter("9.5");
    EXPECT_EQ(window->focusWidget(), &grid());
    EXPECT_EQ(cell(2, 1), "9.5");
    EXPECT_EQ(cell(2, 3), "4.25") << "Z2_Data";
    EXPECT_EQ(grid().currentIndex(), grid().model()->index(3, 1));
    enter("10.5");
    EXPECT_EQ(cell(3, 1), "10.5");
}

// The older file must be written anew, and there is no room for it.
TEST_F(Celebration1Files, ClosingAsksWhenWhatWasTypedCannotBeWritten)
{
    write(inFolder("XDirection.mdb"), QByteArray::fromStdString(calibration::olderFile()));
    auto limit = std::make_unique<LargestFile>(5000);
    open("X");
    goTo(0, 1);
    enter("1.5");
    EXPECT_EQ(cell(0, 1), "1.5");
    EXPECT_TRUE(status().contains("Not written yet")) << qPrintable(status());
    window->AddCalibrationRow();
    window->DeleteLastCalibrationRow();
    EXPECT_EQ(cell(0, 1), "1.5") << "it waits to be written still";
    messages.answers = {false};
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(lastMessage().contains("Go on and lose it?")) << qPrintable(lastMessage());

    limit.reset();
    messages.shown.clear();
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(messages.shown.isEmpty());
    window.reset();
    EXPECT_EQ(rowsOf(inFolder("XDirection.mdb"))[0], "0 1.5 -");
}

TEST_F(Celebration1Files, LoadingAsksForAFileToOpenAndSavingForOneToSave)
{
    open("X");
    button("Command4").click();
    EXPECT_TRUE(messages.lastChoice.toSave);
    EXPECT_EQ(messages.lastChoice.filter, "*.mdb");
    button("Command3").click();
    EXPECT_FALSE(messages.lastChoice.toSave);
    EXPECT_EQ(messages.lastChoice.filter, "");
}

} // namespace
} // namespace quorvel::test
