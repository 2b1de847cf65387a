#include "grayscale/pixels.h"

#include "grayscale/pixelchart.h"
#include "grayscale/readingfile.h"
#include "support/bench_on_the_bus.h"

#include <QCheckBox>
#include <QComboBox>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTest>
#include <QTreeWidget>

#include <gmock/gmock.h>

#include <cmath>

namespace quorvel {
namespace {

using grayscale::PixelChart;
using test::child;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

/// The window before readouts of the simulator: 5 of type A, 12 of type C. Dust lies at 37.3 mm before X of readout 5 alone.
class PixelsOnTheBus : public test::BenchOnTheBus {
protected:
    PixelsOnTheBus()
    {
        bench.currentAddress = QStringLiteral("5");
        bus.command("set 5 x 21.4");
        bus.command("set 5 dust clean");
        bus.command("set 5 dust x 37.3 27 0.2");
        window = std::make_unique<Pixels>(workplace);
        window->show();
        bus.frames();
    }

    QPushButton& button(const QString& name) const { return *child<QPushButton>(*window, name); }
    void press(const QString& name) const { button(name).click(); }
    PixelChart& chart() const { return *child<PixelChart>(*window, "Chart"); }
    std::string status() const { return child<QLabel>(*window, "Status")->text().toStdString(); }
    std::string verdict() const { return child<QLabel>(*window, "Verdict")->text().toStdString(); }
    void setReadings(int count) const { child<QSpinBox>(*window, "Readings")->setValue(count); }
    QString file(const QString& name) const { return folder.filePath(name); }
    QByteArray contents(const QString& name) const
    {
        QFile read(file(name));
        EXPECT_TRUE(read.open(QIODevice::ReadOnly)) << qPrintable(name);
        return read.readAll();
    }
    /// The curve that the legend calls so; null when there is none.
    QCPGraph* curve(const QString& name) const
    {
        for (int i = 0; i < chart().graphCount(); ++i)
            if (chart().graph(i)->name() == name) return chart().graph(i);
        return nullptr;
    }
    /// The place in mm that "Pixel 5584: 37.296 mm, 140" tells; not a number when it tells none.
    static double placeIn(const QString& text)
    {
        static const QRegularExpression form(QStringLiteral("^Pixel \\d+: (-?\\d+\\.\\d+) mm"));
        const auto match = form.match(text);
        return match.hasMatch() ? match.captured(1).toDouble() : std::nan("");
    }
    std::vector<double> drawn() const
    {
        std::vector<double> values;
        for (const auto& point : *curve("Pixels")->data())
            values.push_back(point.value);
        return values;
    }
    /// A cell of the table of figures.
    QString figure(const QString& name, int column = 1) const
    {
        const auto found = child<QTreeWidget>(*window, "Figures")->findItems(name, Qt::MatchStartsWith);
        return found.size() == 1 ? found[0]->text(column)
                                 : QStringLiteral("%1 times there").arg(found.size());
    }

    std::unique_ptr<Pixels> window;
};

TEST_F(PixelsOnTheBus, ReadDrawsThePixelsAndSaysWhatTheyMean)
{
    press("Read");
    EXPECT_EQ(bus.frames(), QStringList(":0565FF"));
    EXPECT_EQ(curve("Pixels")->dataCount(), 7450);
    EXPECT_THAT(verdict(), MatchesRegex("Dust at 37.3 mm, 2[5-9] % deep\\."));
    EXPECT_THAT(status(), HasSubstr("1 of 1 readings of 7450 pixels."));
    EXPECT_THAT(chart().title().toStdString(), StartsWith("Readout 5, type A, X direction, 20"));
    EXPECT_THAT(figure("Shadow, width").toStdString(), MatchesRegex("1\\.(49|50|51) mm"));
    EXPECT_THAT(figure("Dust at 37.").toStdString(), MatchesRegex("2[5-9] % deep, 0\\.(1[4-9]|2[0-6]) mm"));
    EXPECT_EQ(curve("Dip")->dataCount(), 1);
    EXPECT_NEAR(curve("Dip")->dataMainKey(0), 37.3, 0.03);
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(PixelsOnTheBus, CleaningIsSeenBesideTheReference)
{
    press("Read");
    press("KeepReference");
    bus.command("set 5 dust clean");
    press("Read");
    EXPECT_THAT(verdict(), StartsWith("Clean: "));
    ASSERT_TRUE(curve("Reference") && curve("Difference"));
    EXPECT_EQ(curve("Difference")->valueAxis(), chart().differenceAxis());
    EXPECT_TRUE(chart().differenceAxis()->visible());
    EXPECT_THAT(figure("Dust at 37.", 2).toStdString(), MatchesRegex("2[5-9] % deep, 0\\...? mm"));
    EXPECT_EQ(figure("Dust at 37.", 1), "-");
    double most = 0;
    double place = 0;
    for (const auto& point : *curve("Difference")->data()) {
        if (point.value <= most) continue;
        most = point.value;
        place = point.key;
    }
    EXPECT_NEAR(place, 37.3, 0.05);
    EXPECT_NEAR(most, 0.27 * 193, 10);
    press("NoReference");
    EXPECT_FALSE(curve("Reference") || curve("Difference"));
    EXPECT_FALSE(chart().differenceAxis()->visible());
}

TEST_F(PixelsOnTheBus, SeveralReadingsGiveTheirMeanAndTheirSpread)
{
    setReadings(3);
    press("Read");
    EXPECT_EQ(bus.frames(), (QStringList{":0565FF", ":0565FF", ":0565FF"}));
    EXPECT_THAT(status(), HasSubstr("3 of 3 readings"));
    auto* band = curve("Spread of 3 readings");
    ASSERT_NE(band, nullptr);
    EXPECT_NE(band->channelFillGraph(), nullptr);
    double parts = 0;
    for (const auto& point : *curve("Pixels")->data())
        parts += point.value != std::floor(point.value) ? 1 : 0;
    EXPECT_GT(parts, 1000) << "means of three have thirds";
}

TEST_F(PixelsOnTheBus, AMalformedReplyIsSaidAndNotDrawnAndTheNextOneIsRead)
{
    press("Read");
    const auto before = drawn();
    bus.fault("count@65:1");
    press("Read");
    EXPECT_THAT(status(),
                HasSubstr("The reply is malformed, nothing of it is drawn: 14913 characters that begin with "
                          "\":05651D1B"));
    EXPECT_THAT(status(), HasSubstr("What is drawn was read before."));
    EXPECT_EQ(drawn(), before);
    bus.fault("silent@65:1");
    press("Read");
    EXPECT_EQ(status(), "The readout did not answer. What is drawn was read before.");
    EXPECT_TRUE(button("Read").isEnabled());
    press("Read");
    EXPECT_THAT(status(), HasSubstr("1 of 1 readings"));
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(PixelsOnTheBus, AFirstReplyThatIsMalformedLeavesTheChartEmpty)
{
    bus.fault("count@65:1");
    press("Read");
    EXPECT_EQ(chart().graph(0)->dataCount(), 0);
    EXPECT_EQ(verdict(), "");
    EXPECT_FALSE(button("SavePixels").isEnabled());
    EXPECT_FALSE(button("KeepReference").isEnabled());
}

TEST_F(PixelsOnTheBus, OfSeveralReadingsThoseBeforeAMalformedOneCount)
{
    bus.fault("short@65:1+1");
    setReadings(3);
    press("Read");
    EXPECT_THAT(status(), HasSubstr("1 of 3 readings of 7450 pixels."));
    EXPECT_EQ(bus.frames().size(), 2);
}

TEST_F(PixelsOnTheBus, DamagedPixelsAreGapsWithMarks)
{
    bus.command("reply 5 65 :05650004C8GGC8C8FF");
    press("Read");
    EXPECT_TRUE(std::isnan(curve("Pixels")->data()->at(1)->value));
    EXPECT_EQ(curve("Damaged pixel")->dataCount(), 1);
    EXPECT_THAT(verdict(), HasSubstr("There are no pixels between the ends of the sensor."));
}

TEST_F(PixelsOnTheBus, EveryDirectionOfTheTypeIsThere)
{
    struct {
        link::InstrumentType type;
        QStringList directions;
    } const rows[] = {{link::TypeA, {"X", "Y"}}, {link::TypeC, {"X", "Y", "Z1", "Z2"}}, {link::TypeD, {"X"}}};
    for (const auto& [type, directions] : rows) {
        bench.instrumentType = type;
        Pixels other(workplace);
        auto* list = child<QComboBox>(other, "Direction");
        QStringList names;
        for (int i = 0; i < list->count(); ++i)
            names << list->itemText(i);
        EXPECT_EQ(names, directions);
    }
    bench.instrumentType = link::TypeC;
    bench.currentAddress = "12";
    Pixels z(workplace);
    z.show();
    child<QComboBox>(z, "Direction")->setCurrentText("Z2");
    child<QPushButton>(z, "Read")->click();
    EXPECT_EQ(bus.frames(), QStringList(":0C7804FF"));
    EXPECT_THAT(child<PixelChart>(z, "Chart")->title().toStdString(),
                StartsWith("Readout 12, type C, Z2 direction"));
}

TEST_F(PixelsOnTheBus, PixelsAreSavedWithWhatTheyAreAndOpenedAsReference)
{
    setReadings(2);
    press("Read");
    messages.files = {file("dam"), file("dam.csv"), file("dam.mdb"), file("dam.mdb")};
    press("SavePixels");
    EXPECT_THAT(messages.lastChoice.proposed.toStdString(),
                MatchesRegex("readout-5-A-X-20[0-9-]*-[0-9]{6}\\.csv"));
    EXPECT_THAT(messages.lastChoice.filter.toStdString(), HasSubstr("*.csv"));
    const auto text = contents("dam.csv").toStdString();
    EXPECT_THAT(text, StartsWith("# QUORVEL V4.11\n# address: 5\n# type: A\n# direction: X\n# time: 20"));
    EXPECT_THAT(text, HasSubstr("# readings: 2\nsn,mm,hd,spread\n1,-1.785,"));
    EXPECT_THAT(text, HasSubstr("\n256,0.000,"));
    press("OpenReference");
    EXPECT_THAT(status(), HasSubstr("7450 pixels of "));
    ASSERT_TRUE(curve("Difference"));
    press("SavePixels");
    press("OpenReference");
    EXPECT_EQ(curve("Reference")->dataCount(), 7450);
    for (const auto& point : *curve("Difference")->data())
        ASSERT_LE(std::fabs(point.value), 0.51) << "the database has whole numbers";
}

TEST_F(PixelsOnTheBus, AReferenceOfAnotherSensorHasNoDifference)
{
    press("Read");
    QFile other(file("other.csv"));
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    other.write("sn,hd\n1,100\n2,120\n");
    other.close();
    messages.files = {other.fileName(), file("missing.csv")};
    press("OpenReference");
    EXPECT_THAT(status(), HasSubstr("The reading has 7450: no difference is drawn."));
    EXPECT_TRUE(curve("Reference"));
    EXPECT_FALSE(curve("Difference"));
    press("OpenReference");
    EXPECT_THAT(status(), HasSubstr("missing.csv cannot be read"));
    EXPECT_TRUE(curve("Reference")) << "the one from before stays";
}

TEST_F(PixelsOnTheBus, AReferenceOfAnotherDirectionIsSaid)
{
    press("Read");
    press("KeepReference");
    EXPECT_THAT(status(), HasSubstr("are the reference now"));
    child<QComboBox>(*window, "Direction")->setCurrentText("Y");
    press("Read");
    EXPECT_THAT(status(), HasSubstr("The reference is of another sensor: readout 5, X direction."));
    press("KeepReference");
    press("Read");
    EXPECT_EQ(status(), "1 of 1 readings of 7450 pixels.");
}

TEST_F(PixelsOnTheBus, PicturesSayWhatTheyAre)
{
    press("Read");
    messages.files = {file("p"), file("p.jpg"), file("p.pdf"), file("p.xyz"), file("print.pdf")};
    press("SavePicture");
    EXPECT_THAT(messages.lastChoice.proposed.toStdString(), HasSubstr("readout-5-A-X-20"));
    for (const auto& form : chart::forms())
        EXPECT_THAT(messages.lastChoice.filter.toStdString(), HasSubstr("*." + form.toStdString()));
    QImageReader png(file("p.png"));
    EXPECT_EQ(png.text("Description"), "Readout 5, type A, X direction");
    EXPECT_EQ(png.text("Software"), "QUORVEL V4.11");
    press("SavePicture");
    EXPECT_EQ(QImageReader::imageFormat(file("p.jpg")), "jpeg");
    press("SavePicture");
    EXPECT_TRUE(contents("p.pdf").startsWith("%PDF"));
    press("SavePicture");
    EXPECT_THAT(status(), HasSubstr("p.xyz cannot be written"));
    press("Print");
    EXPECT_EQ(status(), "Printed.");
    EXPECT_TRUE(contents("print.pdf").startsWith("%PDF"));
}

TEST_F(PixelsOnTheBus, PicturesOfAReadingBeforeAReferenceAreSavedToo)
{
    press("Read");
    press("KeepReference");
    press("Read"); // the legend has a row that is not full
    messages.files = {file("x.png"), file("print.pdf")};
    press("SavePicture");
    EXPECT_EQ(QImage(file("x.png")).text("Title"), "Pixels");
    press("Print");
    EXPECT_EQ(status(), "Printed.");
}

TEST_F(PixelsOnTheBus, AnExistingFileIsReplacedAfterAQuestion)
{
    press("Read");
    messages.files = {file("a.csv"), file("a.csv"), file("a.csv")};
    press("SavePixels");
    const auto first = contents("a.csv");
    press("Read");
    press("SavePixels");
    EXPECT_EQ(lastMessage(), "File already exists, overwrite this file?");
    EXPECT_EQ(contents("a.csv"), first) << "No";
    messages.answers.push_back(true);
    press("SavePixels");
    EXPECT_NE(contents("a.csv"), first);
}

TEST_F(PixelsOnTheBus, ARowOfTheFiguresPutsTheCursorThere)
{
    press("Read");
    auto* table = child<QTreeWidget>(*window, "Figures");
    table->setCurrentItem(table->findItems("Dust at 37.", Qt::MatchStartsWith).at(0));
    EXPECT_NEAR(placeIn(child<QLabel>(*window, "Readout")->text()), 37.3, 0.05)
        << "noise moves its darkest pixel";
}

TEST_F(PixelsOnTheBus, StopEndsAfterTheReadingThatIsUnderWay)
{
    setReadings(50);
    QTimer::singleShot(0, window.get(), [this] { press("Stop"); });
    press("Read");
    EXPECT_LT(bus.frames().size(), 5);
    EXPECT_THAT(status(), HasSubstr(" of 50 readings"));
    EXPECT_TRUE(button("Read").isEnabled());
    EXPECT_FALSE(button("Stop").isEnabled());
}

TEST_F(PixelsOnTheBus, WithoutAPortOrAnAddressNothingCanBeRead)
{
    child<QLineEdit>(*window, "Address")->setText("250");
    EXPECT_FALSE(button("Read").isEnabled());
    EXPECT_THAT(status(), HasSubstr("Type the address of one readout, 1 to 249."));
    child<QLineEdit>(*window, "Address")->setText("5");
    EXPECT_TRUE(button("Read").isEnabled());
    bus.unplug();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !button("Read").isEnabled(); }, 20'000));
}

TEST_F(PixelsOnTheBus, TheViewStaysFromReadingToReading)
{
    press("Read");
    EXPECT_TRUE(chart().isWhole());
    EXPECT_LT(chart().xAxis->range().lower, -1.785) << "the first pixel";
    chart().showPart({30, 40}, {100, 200});
    press("Read");
    EXPECT_NEAR(chart().xAxis->range().lower, 30, 1e-9);
    EXPECT_NEAR(chart().yAxis->range().upper, 200, 1e-9);
}

} // namespace
} // namespace quorvel
