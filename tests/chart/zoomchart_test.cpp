#include "chart/zoomchart.h"

#include <QTest>

#include <gtest/gtest.h>

namespace quorvel::chart {
namespace {

TEST(GestureOf, OnlyRightDownwardsExtendsAndOnlyLeftUpwardsGoesBack)
{
    EXPECT_EQ(gestureOf({50, 40}), Gesture::Extend);
    EXPECT_EQ(gestureOf({-50, -40}), Gesture::Whole);
    EXPECT_EQ(gestureOf({50, -40}), Gesture::Nothing);
    EXPECT_EQ(gestureOf({-50, 40}), Gesture::Nothing);
}

TEST(GestureOf, ALevelOrUprightDragCountsByItsOneDirection)
{
    EXPECT_EQ(gestureOf({50, -3}), Gesture::Extend);
    EXPECT_EQ(gestureOf({2, 50}), Gesture::Extend);
    EXPECT_EQ(gestureOf({-50, 3}), Gesture::Whole);
    EXPECT_EQ(gestureOf({0, -50}), Gesture::Whole);
}

TEST(GestureOf, AClickAsksForNothing)
{
    EXPECT_EQ(gestureOf({0, 0}), Gesture::Nothing);
    EXPECT_EQ(gestureOf({5, -5}), Gesture::Nothing);
}

/// A chart of a curve from 0 to 50 and from 0 to 300, with a legend.
class ZoomChartShown : public ::testing::Test {
protected:
    ZoomChartShown()
    {
        chart.addGraph()->setData({0, 50}, {0, 300});
        chart.legend->setVisible(true);
        chart.resize(1000, 600);
        chart.show();
        chart.setWhole({0, 50}, {0, 300});
        chart.replot();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&chart, key, modifiers);
    }
    void expectView(double left, double right, double bottom, double top) const
    {
        EXPECT_NEAR(chart.xAxis->range().lower, left, 0.1);
        EXPECT_NEAR(chart.xAxis->range().upper, right, 0.1);
        EXPECT_NEAR(chart.yAxis->range().lower, bottom, 1);
        EXPECT_NEAR(chart.yAxis->range().upper, top, 1);
    }

    ZoomChart chart;
};

TEST_F(ZoomChartShown, KeysZoomTheLeftAxisWithControl)
{
    press(Qt::Key_Plus, Qt::ControlModifier);
    expectView(0, 50, 30, 270);
    press(Qt::Key_Equal, Qt::ControlModifier);
    expectView(0, 50, 54, 246);
    press(Qt::Key_Minus, Qt::ControlModifier);
    press(Qt::Key_Minus, Qt::ControlModifier);
    expectView(0, 50, 0, 300);
}

TEST_F(ZoomChartShown, BackspaceGoesBackStepByStep)
{
    press(Qt::Key_Plus);
    press(Qt::Key_Right);
    press(Qt::Key_Home);
    expectView(0, 50, 0, 300);
    press(Qt::Key_Backspace);
    expectView(9, 49, 0, 300);
    press(Qt::Key_Backspace);
    expectView(5, 45, 0, 300);
    press(Qt::Key_Backspace);
    expectView(0, 50, 0, 300);
    EXPECT_FALSE(chart.stepBack());
}

TEST_F(ZoomChartShown, ANewWholeHasNothingBeforeIt)
{
    press(Qt::Key_Plus);
    chart.setWhole({0, 100}, {0, 300});
    EXPECT_FALSE(chart.stepBack());
}

TEST_F(ZoomChartShown, TheLegendIsHiddenAndShownByL)
{
    press(Qt::Key_L);
    EXPECT_FALSE(chart.legend->visible());
    press(Qt::Key_L);
    EXPECT_TRUE(chart.legend->visible());
}

TEST_F(ZoomChartShown, TheLegendIsDraggedAndStaysWithinTheAxes)
{
    const auto before = chart.legend->outerRect();
    const auto from = before.center();
    const auto drag = [this](const QPoint& start, const QPoint& end) {
        QTest::mousePress(&chart, Qt::LeftButton, Qt::NoModifier, start);
        QTest::mouseMove(&chart, end);
        QTest::mouseRelease(&chart, Qt::LeftButton, Qt::NoModifier, end);
        chart.replot();
    };
    drag(from, from + QPoint(-200, 100));
    const auto moved = chart.legend->outerRect().topLeft() - before.topLeft() - QPoint(-200, 100);
    EXPECT_LE(moved.manhattanLength(), 2) << "places are parts of the axes";
    expectView(0, 50, 0, 300);
    drag(chart.legend->outerRect().center(), {-500, 2000});
    EXPECT_TRUE(chart.axisRect()->rect().contains(chart.legend->outerRect()));
    expectView(0, 50, 0, 300);
}

} // namespace
} // namespace quorvel::chart
