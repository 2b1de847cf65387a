#include "calibration/recordjob.h"
#include "windows/celebration1_on_the_bus.h"

#include <QDir>
#include <QFile>

namespace quorvel::test {
namespace {

using namespace calibration;

/// The calibration window and the record beside its file.
class Celebration1Record : public Celebration1OnTheBus {
protected:
    void calibrate()
    {
        for (int point = 0; point < 11; ++point) {
            put(5, "x", 10.0 + 0.5 * point);
            measure(point);
        }
        for (int point = 0; point < 11; ++point)
            grid().model()->setData(grid().model()->index(point, 1), QString::number(0.25 * point));
    }
    RecordFile record()
    {
        RecordFile file(inFolder("XDirection.mdb").toStdString(), *directionOf("X"));
        file.load();
        return file;
    }
    QLineEdit& addressBox() { return *child<QLineEdit>(*window, "Text1"); }
    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }
};

constexpr auto kNotTheirs =
    "The points were measured at readout 5, the address is 12: they are not this readout's.";

TEST_F(Celebration1Record, SaysForWhomAndWhenThePointsWereTaken)
{
    open("X");
    EXPECT_EQ(status(), standing()) << "nothing is known yet";
    calibrate();
    const auto day = QDate::currentDate().toString(Qt::ISODate);
    EXPECT_TRUE(status().startsWith(standing() + ". Points: readout 5, " + day)) << qPrintable(status());
    window.reset();
    open("X");
    EXPECT_TRUE(status().startsWith(standing() + ". Points: readout 5, " + day)) << qPrintable(status());
    grid().model()->setData(grid().model()->index(3, 2), "1");
    EXPECT_TRUE(status().contains("Of 1 more it is not known where they were measured."))
        << qPrintable(status());
}

TEST_F(Celebration1Record, PointsOfAnotherReadoutAreSaidBeforeTheyAreSent)
{
    open("X");
    calibrate();
    addressBox().setText("12");
    EXPECT_TRUE(status().startsWith(kNotTheirs)) << qPrintable(status());
    QString atTheEnd;
    messages.onShow = [&](const QString&) { atTheEnd = status(); };
    addressBox().setText("33");
    bus.frames();
    button("Command1").click();
    EXPECT_EQ(bus.frames().size(), 1) << "the prescribed frame goes out all the same";
    EXPECT_EQ(messages.shown, QStringList{"X向标定参数下载完毕！"});
    EXPECT_TRUE(atTheEnd.startsWith("The points were measured at readout 5, the address is 33"))
        << qPrintable(atTheEnd);
    addressBox().setText("5");
    EXPECT_FALSE(status().contains("not this readout's")) << qPrintable(status());
}

TEST_F(Celebration1Record, DownloadIsNotedAndItsTableKept)
{
    open("X");
    calibrate();
    button("Command1").click();
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "X向标定参数下载完毕！");
    const auto file = record();
    ASSERT_EQ(file.data().downloads.size(), 2U);
    const auto& note = file.data().downloads[0];
    EXPECT_EQ(note.address, 5);
    EXPECT_EQ(note.column, "X_Data");
    EXPECT_EQ(note.frame.substr(0, 23), ":056111+010.000+000.000");
    EXPECT_EQ(note.verdict, Verdict::Agrees);
    EXPECT_EQ(note.largestDifference, 0);
    EXPECT_EQ(file.data().address, 5);
    const auto day = QDate::currentDate().toString(Qt::ISODate);
    EXPECT_EQ(files(),
              (QStringList{"XDirection." + day + ".mdb", "XDirection.mdb", "XDirection.record.json"}));
    EXPECT_EQ(rowsOf(inFolder("XDirection." + day + ".mdb")), rowsOf(inFolder("XDirection.mdb")));
}

// The companion is damaged, write-protected or a folder: the prescribed steps do not mind.
TEST_F(Celebration1Record, NoStepNeedsTheRecord)
{
    const auto path = inFolder("XDirection.record.json");
    for (const auto* kind : {"damaged", "write-protected", "folder"}) {
        SCOPED_TRACE(kind);
        if (QString::fromLatin1(kind) == "folder") {
            ASSERT_TRUE(QDir(folder.path()).mkdir("XDirection.record.json"));
        } else {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write("{ half");
            if (QString::fromLatin1(kind) == "write-protected") file.setPermissions(QFileDevice::ReadOwner);
        }
        open("X");
        messages.shown.clear();
        calibrate();
        EXPECT_EQ(cell(10, 2), "15");
        button("Command2").click();
        button("Command1").click();
        EXPECT_EQ(messages.shown,
                  (QStringList{"X: Y=2.0000*X+(10.000)\r\nNonlinear Error: 0.000, Max Error: 0.000",
                               "X向标定参数下载完毕！"}));
        messages.files = {inFolder("copy")};
        button("Command4").click();
        messages.files = {inFolder("copy.mdb")};
        button("Command3").click();
        EXPECT_EQ(cell(10, 2), "15");
        window.reset();
        EXPECT_FALSE(QFile::exists(inFolder("copy.record.json"))) << "saving saves one file";
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        QFile::remove(path);
        QDir().rmdir(path);
        QFile::remove(inFolder("XDirection.mdb"));
        // the readout corrects by its table now; zeros let it read as before
        RecordJob(module1, folder.path().toStdString(), *directionOf("X")).switchOff(5);
        QFile::remove(path);
    }
}

// A file of another machine, beside a record that is about others: nothing of it counts.
TEST_F(Celebration1Record, FilesFromElsewhereWorkAsBefore)
{
    open("X");
    calibrate();
    messages.files = {inFolder("mine")};
    button("Command4").click();
    fill({1, 2});
    window.reset();
    ASSERT_TRUE(QFile::copy(inFolder("XDirection.record.json"), inFolder("kept.json")));
    QFile::remove(inFolder("XDirection.record.json"));
    open("X");
    EXPECT_EQ(status(), standing());
    ASSERT_TRUE(QFile::rename(inFolder("kept.json"), inFolder("XDirection.record.json")));
    window.reset();
    open("X");
    EXPECT_EQ(status(), standing()) << "its points are others";
    addressBox().setText("33");
    EXPECT_EQ(status(), standing());
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "X向标定参数下载完毕！");
    messages.files = {inFolder("mine.mdb")};
    button("Command3").click();
    EXPECT_TRUE(status().contains("readout 5, the address is 33"))
        << "these are the ones " << qPrintable(status());
}

} // namespace
} // namespace quorvel::test
