#include "windows/site_by_hand.h"

#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QTest>
#include <QWheelEvent>

#include <cmath>

namespace quorvel::test {

namespace {

using site::TrendChart;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// The trend of the window after five sweeps, ten seconds apart, in which X of readout 5 rises by 0.1 mm each.
class SiteTrend : public SiteByHand {
protected:
    SiteTrend()
    {
        openDam();
        controls.box("SiteEvery").setChecked(true);
        controls.press("SiteSweep");
        for (int i = 0; i < 5; ++i) {
            values["052101"] = "+1." + std::to_string(i) + "0000-0.25000";
            moveTo(QTime(9, 5, 40).addSecs(10 * i));
        }
        controls.press("SiteStop");
    }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&chart, key, modifiers);
    }
    std::string words(const QString& name) { return child<QLabel>(form, name)->text().toStdString(); }
    /// Highest point of the first curve, X over time.
    double highest()
    {
        double mm = -1e9;
        for (const auto& point : *chart.graph(TrendChart::kMarks)->data())
            mm = std::max(mm, point.value);
        return mm;
    }

    TrendChart& chart = *child<TrendChart>(form, "SiteTrend");
};

TEST_F(SiteTrend, ReadingBetweenTwoSilencesIsDrawnAsADot)
{
    const auto* dots = chart.graph(TrendChart::kMarks + 1);
    EXPECT_EQ(dots->dataCount(), 0) << "the line goes to all";
    controls.box("SiteEvery").setChecked(false);
    for (int i = 0; i < 3; ++i) {
        if (i == 1) {
            values["052101"] = "+1.70000-0.25000";
        } else {
            values.erase("052101");
        }
        clock.move(10);
        controls.press("SiteSweep");
    }
    ASSERT_EQ(dots->dataCount(), 1);
    EXPECT_EQ(dots->dataMainValue(0), 1.7);
    EXPECT_EQ(dots->scatterStyle().shape(), QCPScatterStyle::ssDisc);
}

TEST_F(SiteTrend, TicksAreWhereTheirTextsSay)
{
    auto& axis = *chart.graph(TrendChart::kMarks)->keyAxis();
    for (const double seconds : {10.0, 12.0, 15.0, 20.0, 50.0}) {
        axis.setRange(axis.range().lower, axis.range().lower + seconds);
        chart.replot();
        ASSERT_GT(axis.tickVector().size(), 1);
        for (const double tick : axis.tickVector())
            EXPECT_EQ(tick, std::floor(tick)) << "of " << seconds << " s in sight";
    }
}

TEST_F(SiteByHand, EmptyTrendFillsItsHeightAndShowsNoFigures)
{
    auto& chart = *child<TrendChart>(form, "SiteTrend");
    const auto bottom = [&chart] { return chart.graph(0)->valueAxis()->axisRect(); };
    chart.replot();
    EXPECT_GT(bottom()->outerRect().bottom(), chart.height() * 8 / 10);
    for (auto* rect : chart.axisRects()) {
        for (auto* axis : rect->axes())
            EXPECT_FALSE(axis->visible() && axis->tickLabels());
    }
    openDam();
    controls.press("SiteSweep");
    EXPECT_TRUE(bottom()->axis(QCPAxis::atLeft)->tickLabels());
}

TEST_F(SiteTrend, FiguresAreThoseOfTheReadingsInSight)
{
    EXPECT_THAT(
        words("SiteFigures"),
        StartsWith("5 Block 7. X: mean +1.20000 mm, swing 0.40000 mm, drift +36.000000 mm/h (5 readings); "
                   "Y: mean -0.25000 mm, swing 0.00000 mm, drift +0.000000 mm/h"));
    const auto end = chart.span().to;
    chart.showSpan({end - 10, end});
    EXPECT_THAT(words("SiteFigures"), HasSubstr("X: mean +1.35000 mm, swing 0.10000 mm"));
    key(Qt::Key_Home);
    EXPECT_THAT(words("SiteFigures"), HasSubstr("(5 readings)"));
}

TEST_F(SiteTrend, MarksAreSetAndMovedByKeysAndTheirDifferenceIsSaid)
{
    EXPECT_THAT(words("SiteMarks"), HasSubstr("arrow keys set mark A"));
    key(Qt::Key_Left); // the newest
    key(Qt::Key_Left, Qt::ShiftModifier);
    key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_THAT(words("SiteMarks"),
                HasSubstr("A: 2024-05-17 09:06:20, X +1.40000, Y -0.25000; B: 2024-05-17 09:06:10, "
                          "X +1.30000, Y -0.25000; B - A: -10 s, X -0.10000, Y +0.00000."));
    key(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_THAT(words("SiteMarks"), HasSubstr("A: 2024-05-17 09:05:40, X +1.00000"));
    key(Qt::Key_Right);
    EXPECT_THAT(words("SiteMarks"), HasSubstr("A: 2024-05-17 09:05:50, X +1.10000"));
}

TEST_F(SiteTrend, ClickSetsMarkAAndShiftClickMarkB)
{
    chart.replot();
    const auto* axis = chart.graph(TrendChart::kMarks)->keyAxis();
    const auto place = [&](double part) {
        const auto span = chart.span();
        const int x =
            static_cast<int>(std::lround(axis->coordToPixel(span.from + part * (span.to - span.from))));
        return QPoint(x, axis->axisRect()->center().y());
    };
    QTest::mouseClick(&chart, Qt::LeftButton, Qt::NoModifier, place(0.02));
    QTest::mouseClick(&chart, Qt::LeftButton, Qt::ShiftModifier, place(0.77));
    ASSERT_TRUE(chart.mark(TrendChart::A) && chart.mark(TrendChart::B));
    EXPECT_EQ(chart.mark(TrendChart::A)->mm[0], 1.0);
    EXPECT_EQ(chart.mark(TrendChart::B)->mm[0], 1.3);
}

TEST_F(SiteTrend, ZoomedViewStaysAndTheWholeFollows)
{
    values["052101"] = "+1.90000-0.25000";
    const auto whole = chart.span();
    controls.box("SiteEvery").setChecked(false);
    clock.move(20);
    controls.press("SiteSweep");
    EXPECT_GT(chart.span().to, whole.to);
    EXPECT_EQ(highest(), 1.9);
    chart.showSpan({whole.from, whole.from + 20});
    const auto zoomed = chart.span();
    clock.move(20);
    controls.press("SiteSweep");
    EXPECT_EQ(chart.span(), zoomed);
}

TEST_F(SiteTrend, WheelAndKeysZoomAndMoveTheTime)
{
    const auto whole = chart.span();
    const double seconds = whole.to - whole.from;
    key(Qt::Key_Plus);
    EXPECT_NEAR(chart.span().to - chart.span().from, seconds / 1.25, 1e-3);
    key(Qt::Key_Minus);
    EXPECT_NEAR(chart.span().to - chart.span().from, seconds, 1e-3);
    key(Qt::Key_PageUp);
    EXPECT_NEAR(chart.span().from, whole.from - seconds / 2, 1e-3);
    key(Qt::Key_PageDown);
    EXPECT_NEAR(chart.span().from, whole.from, 1e-3);

    const auto* axis = chart.graph(TrendChart::kMarks)->keyAxis();
    const QPointF place(axis->coordToPixel(whole.from + 10), axis->axisRect()->center().y());
    QWheelEvent towards(place, chart.mapToGlobal(place), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                        Qt::NoScrollPhase, false);
    QApplication::sendEvent(&chart, &towards);
    EXPECT_NEAR(chart.span().to - chart.span().from, seconds / 1.25, 1e-3);
    EXPECT_NEAR(axis->coordToPixel(whole.from + 10), place.x(), 0.5) << "what the pointer is on stays there";
}

TEST_F(SiteTrend, ReadingsStayInSightWhateverIsPressed)
{
    const auto whole = chart.span();
    const double seconds = whole.to - whole.from;
    for (const auto pressed : {Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Minus, Qt::Key_Plus}) {
        for (int i = 0; i < 200; ++i)
            key(pressed);
        const auto seen = chart.span();
        EXPECT_LE(seen.from, whole.to) << pressed;
        EXPECT_GE(seen.to, whole.from) << pressed;
        EXPECT_LE(seen.to - seen.from, 3 * seconds + 1e-3) << pressed;
        EXPECT_GE(seen.to - seen.from, 10 - 1e-3) << pressed;
    }
    key(Qt::Key_Home);
    EXPECT_EQ(chart.span(), whole);
}

TEST_F(SiteTrend, ChangesAreFromTheFirstValueInSight)
{
    EXPECT_EQ(highest(), 1.4);
    controls.box("SiteRelative").click();
    EXPECT_NEAR(highest(), 0.4, 1e-9);
}

TEST_F(SiteTrend, ChosenRowsAreDrawnAndUpAndDownChooseWhereTheMarksAre)
{
    controls.table().selectAll();
    ASSERT_EQ(chart.curves().size(), 3U);
    EXPECT_EQ(chart.curves()[1].name, "12 Block 9");
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Up);
    EXPECT_EQ(child<QComboBox>(form, "SiteMarksOn")->currentText(), "12 Block 9");
    EXPECT_THAT(words("SiteFigures"), StartsWith("12 Block 9. X: mean +0.10000"));
    controls.table().clearSelection();
    EXPECT_THAT(words("SiteFigures"), HasSubstr("Choose readouts in the table"));
    EXPECT_FALSE(controls.button("SitePicture").isEnabled());
}

TEST_F(SiteTrend, FailedReadingIsAGap)
{
    values.erase("052101");
    clock.move(20);
    controls.box("SiteEvery").setChecked(false);
    controls.press("SiteSweep");
    const auto& drawn = *chart.graph(TrendChart::kMarks)->data();
    EXPECT_EQ(drawn.size(), 6);
    EXPECT_TRUE(std::isnan((drawn.constEnd() - 1)->value));
    key(Qt::Key_Left);
    EXPECT_EQ(chart.mark(TrendChart::A)->mm[0], 1.4) << "a mark lies on a value";
}

TEST_F(SiteTrend, PictureAndCsvLeaveTheWindow)
{
    with("trend.png", "SitePicture");
    EXPECT_FALSE(QImage(file("trend.png")).isNull());
    EXPECT_THAT(controls.status(), StartsWith("Saved as "));
    controls.table().selectAll();
    with("trend.csv", "SiteCsv");
    const auto rows = read("trend.csv");
    EXPECT_THAT(rows, StartsWith("time,site,address,name,type,xMm,yMm,z1Mm,z2Mm,outcome\n"));
    EXPECT_THAT(rows, HasSubstr(",North dam,5,Block 7,A,1.40000,-0.25000,,,complete\n"));
    EXPECT_THAT(rows, HasSubstr(",North dam,12,Block 9,C,0.10000,0.20000,2.00000,2.10000,complete\n"));
    EXPECT_EQ(QString::fromStdString(rows).count(u'\n'), 16);
}

} // namespace

} // namespace quorvel::test
