#include "chart/export.h"
#include "jet/database.h"
#include "windows/grayscalechart_on_the_bus.h"

#include <QDir>
#include <QImageReader>

namespace quorvel {
namespace {

TEST_F(GrayScaleChartOnTheBus, SaveDataWritesTheTableAndNothingElse)
{
    auto& window = open("X");
    messages.files.push_back(file("x.mdb"));
    window.saveData().click();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_EQ(messages.lastChoice.filter, "Database file(*.mdb)");
    auto database = jet::OpenDatabase(file("x.mdb").toStdString());
    ASSERT_TRUE(database);
    auto rows = database->OpenRecordset("select * from data order by sn");
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->RecordCount(), 7450);
    EXPECT_EQ(rows->Fields("sn").Value().text(), "1");
    EXPECT_EQ(rows->Fields("hd").Value().text(), std::to_string(window.window.array()[1]));
    ASSERT_TRUE(rows->MoveLast());
    EXPECT_EQ(rows->Fields("sn").Value().text(), "7450");
    EXPECT_EQ(rows->Fields("hd").Value().text(), std::to_string(window.window.array()[7450]));
    EXPECT_EQ(bus.frames().size(), 1) << "saving reads nothing";
}

TEST_F(GrayScaleChartOnTheBus, SaveDataAsksBeforeItOverwrites)
{
    auto& window = open("X");
    QFile old(file("x.csv"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    messages.files = {file("x.csv"), file("x.csv")};
    messages.answers = {false, true};
    window.saveData().click();
    EXPECT_EQ(messages.last(), "File already exists, overwrite this file?");
    EXPECT_EQ(QFileInfo(file("x.csv")).size(), 3);
    window.saveData().click();
    EXPECT_GT(QFileInfo(file("x.csv")).size(), 7450 * 4);
}

TEST_F(GrayScaleChartOnTheBus, SaveDataSaysWhyAFileCannotBeWritten)
{
    auto& window = open("X");
    messages.files.push_back(file("missing/x.mdb"));
    window.saveData().click();
    EXPECT_TRUE(lastMessage().contains(file("missing/x.mdb"))) << qPrintable(lastMessage());
    EXPECT_EQ(window.status(), lastMessage());
}

TEST_F(GrayScaleChartOnTheBus, ACancelledDialogWritesNothing)
{
    auto& window = open("X");
    window.saveData().click();
    EXPECT_EQ(messages.lastChoice.filter, "Database file(*.mdb)");
    window.saveGraph().click();
    EXPECT_EQ(messages.lastChoice.filter, "(*.jpg)");
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_EQ(window.status(), "7450 pixels read.");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList());
}

TEST_F(GrayScaleChartOnTheBus, AReadingOfNoPixelsIsSavedAsAnEmptyTable)
{
    bus.command(QStringLiteral("reply 5 65 :05650000FF"));
    auto& window = open("X");
    EXPECT_TRUE(messages.shown.isEmpty());
    messages.files.push_back(file("x.mdb"));
    window.saveData().click();
    auto database = jet::OpenDatabase(file("x.mdb").toStdString());
    ASSERT_TRUE(database);
    auto rows = database->OpenRecordset("select * from data order by sn");
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->RecordCount(), 0);
}

TEST_F(GrayScaleChartOnTheBus, SaveGraphWritesAJpegAndIsSilentWhenItCannot)
{
    auto& window = open("X");
    messages.files = {file("x.jpg"), file("missing/x.jpg")};
    window.saveGraph().click();
    EXPECT_EQ(messages.lastChoice.filter, "(*.jpg)");
    EXPECT_EQ(QImageReader::imageFormat(file("x.jpg")), "jpeg");
    EXPECT_GE(QImageReader(file("x.jpg")).size().width(), 1200);
    window.saveGraph().click();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_TRUE(window.status().contains(file("missing/x.jpg"))) << qPrintable(window.status());
}

TEST_F(GrayScaleChartOnTheBus, BothFileDialogsOpenFiles)
{
    auto& window = open("X");
    messages.lastChoice.toSave = true;
    window.saveData().click();
    EXPECT_FALSE(messages.lastChoice.toSave);
    messages.lastChoice.toSave = true;
    window.saveGraph().click();
    EXPECT_FALSE(messages.lastChoice.toSave);
}

/// Pixels of an area that are of a kind.
template<class Kind>
int countIn(const QImage& image, const QRect& area, Kind kind)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (kind(QColor(image.pixel(x, y)))) ++count;
        }
    }
    return count;
}

TEST_F(GrayScaleChartOnTheBus, ThePictureHasTheRedLinesAndTheTitle)
{
    auto& window = open("X");
    messages.files = {file("x.jpg")};
    window.saveGraph().click();
    const QImage picture(file("x.jpg"));
    ASSERT_FALSE(picture.isNull());
    auto& chart = window.chart();
    const double scale = static_cast<double>(picture.width()) / chart.width();
    const auto inPicture = [scale](const QRectF& area) {
        return QRectF(area.topLeft() * scale, area.size() * scale).toRect();
    };
    const QRectF plot = chart.axisRect()->rect();
    const auto isRed = [](const QColor& colour) {
        return colour.red() > 150 && colour.green() < colour.red() - 60 && colour.blue() < colour.red() - 60;
    };
    const auto redAt = [&](double millimetres) {
        const double x = chart.xAxis->coordToPixel(millimetres);
        return countIn(picture, inPicture({x - 2, plot.top(), 4, plot.height()}), isRed);
    };
    const int half = static_cast<int>(plot.height() * scale / 2);
    EXPECT_GT(redAt(0), half);
    EXPECT_GT(redAt(50), half);
    EXPECT_EQ(redAt(25), 0);
    EXPECT_EQ(redAt(12), 0);

    const auto isInk = [](const QColor& colour) { return colour.lightness() < 110; };
    const auto aboveThePlot = inPicture({plot.left(), 1, plot.width(), plot.top() - 3});
    EXPECT_GT(countIn(picture, aboveThePlot, isInk), 500);
    chart.setTitle(QString());
    chart.replot();
    const auto untitled = chart::picture(chart);
    EXPECT_EQ(
        countIn(untitled, inPicture({plot.left(), 1, plot.width(), chart.axisRect()->top() - 3.0}), isInk), 0)
        << "it is the title that stands there";
}

} // namespace
} // namespace quorvel
