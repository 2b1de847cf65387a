#include "calibration/older_file.h"
#include "windows/celebration1_on_the_bus.h"

#include <QDir>
#include <QFile>

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
    EXPECT_EQ(status(), "");
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

TEST_F(Celebration1Files, WorkingFileThatCannotBeReadIsNeverOverwritten)
{
    write(inFolder("XDirection.mdb"), "years of work, garbled");
    open("X");
    EXPECT_TRUE(status().contains("XDirection.mdb")) << qPrintable(status());
    EXPECT_EQ(grid().model()->rowCount(), 0);
    for (const auto* name : {"Command1", "Command2"}) {
        button(name).click();
        EXPECT_EQ(lastMessage(), "Some Data is empty, Please check!");
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
}

// The older file must be written anew, and a folder stands in the way.
TEST_F(Celebration1Files, ClosingAsksWhenWhatWasTypedCannotBeWritten)
{
    write(inFolder("XDirection.mdb"), QByteArray::fromStdString(calibration::olderFile()));
    QDir(folder.path()).mkpath("XDirection.new.mdb/in the way");
    open("X");
    goTo(0, 1);
    enter("1.5");
    EXPECT_EQ(cell(0, 1), "1.5");
    EXPECT_TRUE(status().contains("Not written yet")) << qPrintable(status());
    messages.answers = {false};
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(lastMessage().contains("Go on and lose it?")) << qPrintable(lastMessage());

    QDir(inFolder("XDirection.new.mdb")).removeRecursively();
    messages.shown.clear();
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(messages.shown.isEmpty());
    window.reset();
    EXPECT_EQ(rowsOf(inFolder("XDirection.mdb"))[0], "0 1.5 -");
}

} // namespace
} // namespace quorvel::test
