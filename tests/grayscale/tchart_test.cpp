#include "chart/export.h"
#include "grayscale/tchart.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvel::grayscale {
namespace {

/// A chart of 101 pixels from 0 to 50 mm, as bright as their number.
class TChartShown : public ::testing::Test {
protected:
    TChartShown()
    {
        QVector<double> positions;
        QVector<double> values;
        for (int i = 0; i <= 100; ++i) {
            positions << i * 0.5;
            values << i + 1;
        }
        chart_.addSeries(positions, values, chart::Role::First, QStringLiteral("Pixels"));
        chart_.setPositionLabels({{0, "0"}, {25, "25"}, {50, "50"}, {51.5, "(mm)"}});
        chart_.setBrightnessLabels({{0, "0"}, {300, "GrayScale"}});
        chart_.resize(1000, 600);
        chart_.show();
        chart_.setWhole({0, 50}, {0, 300});
        chart_.replot();
    }

    QPoint at(double position, double brightness) const
    {
        return {qRound(chart_.xAxis->coordToPixel(position)), qRound(chart_.yAxis->coordToPixel(brightness))};
    }
    void drag(Qt::MouseButton button, const QPoint& from, const QPoint& to)
    {
        QTest::mousePress(&chart_, button, Qt::NoModifier, from);
        QTest::mouseMove(&chart_, (from + to) / 2);
        QTest::mouseMove(&chart_, to);
        QTest::mouseRelease(&chart_, button, Qt::NoModifier, to);
    }
    void turnWheel(const QPoint& where, int notches, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWheelEvent event(where, chart_.mapToGlobal(where), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&chart_, &event);
    }
    void expectView(double left, double right, double bottom, double top) const
    {
        EXPECT_NEAR(chart_.xAxis->range().lower, left, 0.1);
        EXPECT_NEAR(chart_.xAxis->range().upper, right, 0.1);
        EXPECT_NEAR(chart_.yAxis->range().lower, bottom, 1);
        EXPECT_NEAR(chart_.yAxis->range().upper, top, 1);
    }

    TChart chart_;
};

TEST_F(TChartShown, LeftButtonRightDownwardsExtendsThePartDraggedOver)
{
    drag(Qt::LeftButton, at(10, 200), at(20, 100));
    expectView(10, 20, 100, 200);
    drag(Qt::LeftButton, at(12, 180), at(14, 160));
    expectView(12, 14, 160, 180);
}

TEST_F(TChartShown, LeftButtonLeftUpwardsGoesBackToTheWhole)
{
    drag(Qt::LeftButton, at(10, 200), at(20, 100));
    drag(Qt::LeftButton, at(18, 120), at(15, 150));
    expectView(0, 50, 0, 300);
}

TEST_F(TChartShown, LeftButtonToAnotherCornerOrAClickChangesNothing)
{
    drag(Qt::LeftButton, at(10, 200), at(20, 100));
    drag(Qt::LeftButton, at(12, 120), at(18, 180));
    drag(Qt::LeftButton, at(18, 180), at(12, 120));
    QTest::mouseClick(&chart_, Qt::LeftButton, Qt::NoModifier, at(15, 150));
    expectView(10, 20, 100, 200);
}

TEST_F(TChartShown, ALevelDragKeepsTheBrightness)
{
    drag(Qt::LeftButton, at(10, 150), at(20, 150));
    expectView(10, 20, 0, 300);
}

TEST_F(TChartShown, ADragThatShakesByAPixelExtendsAllTheSame)
{
    for (const int shake : {-1, 1}) {
        chart_.showWhole();
        drag(Qt::LeftButton, at(10, 150), at(20, 150) + QPoint(0, shake));
        expectView(10, 20, 0, 300);
        chart_.showWhole();
        drag(Qt::LeftButton, at(10, 200), at(10, 100) + QPoint(shake, 0));
        expectView(0, 50, 100, 200);
    }
}

TEST_F(TChartShown, ADragBeyondTheEdgeEndsThere)
{
    drag(Qt::LeftButton, at(40, 150), QPoint(999, 599));
    expectView(40, 50, 0, 150);
}

TEST_F(TChartShown, RightButtonMovesTheGraph)
{
    drag(Qt::LeftButton, at(10, 200), at(20, 100));
    drag(Qt::RightButton, at(15, 150), at(13, 160));
    expectView(12, 22, 90, 190);
}

TEST_F(TChartShown, MovingKeepsThePictureInSight)
{
    drag(Qt::LeftButton, at(10, 200), at(20, 100));
    for (int i = 0; i < 20; ++i) {
        drag(Qt::RightButton, at(chart_.xAxis->range().upper, 150), at(chart_.xAxis->range().lower, 150));
    }
    expectView(45, 55, 100, 200);
}

TEST_F(TChartShown, WheelZoomsAroundTheMouse)
{
    turnWheel(at(10, 150), 1);
    expectView(2, 42, 0, 300);
    turnWheel(at(10, 150), -1);
    expectView(0, 50, 0, 300);
    turnWheel(at(10, 150), 1, Qt::ShiftModifier);
    expectView(0, 50, 30, 270);
}

TEST_F(TChartShown, ZoomHasItsLimits)
{
    turnWheel(at(25, 150), -50);
    expectView(0, 50, 0, 300);
    turnWheel(at(20, 150), 100);
    EXPECT_NEAR(chart_.xAxis->range().size(), 0.05, 1e-9);
    EXPECT_TRUE(chart_.xAxis->range().contains(20));
}

TEST_F(TChartShown, KeysZoomMoveAndGoBack)
{
    QTest::keyClick(&chart_, Qt::Key_Plus);
    expectView(5, 45, 0, 300);
    QTest::keyClick(&chart_, Qt::Key_Right);
    expectView(9, 49, 0, 300);
    QTest::keyClick(&chart_, Qt::Key_Home);
    expectView(0, 50, 0, 300);
}

TEST_F(TChartShown, MouseReadsTheNearestPixel)
{
    const QSignalSpy pointed(&chart_, &TChart::pointedAt);
    QTest::mouseMove(&chart_, at(24.6, 10));
    ASSERT_FALSE(pointed.isEmpty());
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 50: 24.500 mm, 50");
    QTest::mouseMove(&chart_, at(24.9, 10));
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 51: 25.000 mm, 51");
    QTest::mouseMove(&chart_, QPoint(2, 2));
    EXPECT_EQ(pointed.last().first().toString(), "");
}

/// 20 pixels a column: one of them is dark, one bright.
TEST_F(TChartShown, MouseFindsThePixelThatStandsOutUnderItsColumn)
{
    QVector<double> positions;
    QVector<double> values(20000, 200);
    for (int i = 0; i < values.size(); ++i) {
        positions << i * 0.0025;
    }
    values[10'000] = 40;
    values[15'000] = 250;
    chart_.removeAllSeries();
    chart_.addSeries(positions, values, chart::Role::First, QString());
    const QSignalSpy pointed(&chart_, &TChart::pointedAt);
    QTest::mouseMove(&chart_, at(25, 10));
    EXPECT_TRUE(
        pointed.last().first().toString().startsWith("Pixel 10001: 25.000 mm, 40 (the extreme of pixels "));
    QTest::mouseMove(&chart_, at(37.5, 10));
    EXPECT_TRUE(
        pointed.last().first().toString().startsWith("Pixel 15001: 37.500 mm, 250 (the extreme of pixels "));
}

TEST_F(TChartShown, ControlAndArrowsStepFromPixelToPixel)
{
    const QSignalSpy pointed(&chart_, &TChart::pointedAt);
    QTest::keyClick(&chart_, Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 51: 25.000 mm, 51") << "begins in the middle";
    QTest::keyClick(&chart_, Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 52: 25.500 mm, 52");
    chart_.showPart({26, 30}, {0, 300});
    QTest::keyClick(&chart_, Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 51: 25.000 mm, 51");
    EXPECT_TRUE(chart_.xAxis->range().contains(25)) << "it is moved into sight";
    chart_.pointTo(101);
    QTest::keyClick(&chart_, Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 101: 50.000 mm, 101") << "the last one";
    chart_.removeAllSeries();
    QTest::keyClick(&chart_, Qt::Key_Right, Qt::ControlModifier);
}

TEST_F(TChartShown, SpaceLeavesASecondCursorFromWhichDifferencesCount)
{
    const QSignalSpy pointed(&chart_, &TChart::pointedAt);
    chart_.pointTo(51);
    QTest::keyClick(&chart_, Qt::Key_Space);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 51: 25.000 mm, 51");
    chart_.pointTo(48);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 48: 23.500 mm, 48; from pixel 51: -1.500 mm, -3");
    QTest::mouseClick(&chart_, Qt::LeftButton, Qt::NoModifier, at(10, 100));
    chart_.pointTo(22);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 22: 10.500 mm, 22; from pixel 21: 0.500 mm, 1");
    chart_.pointTo(21);
    QTest::keyClick(&chart_, Qt::Key_Space);
    chart_.pointTo(22);
    EXPECT_EQ(pointed.last().first().toString(), "Pixel 22: 10.500 mm, 22") << "taken away";
}

TEST_F(TChartShown, AnAxisIsNamedBesideItWhileItsLabelIsOutOfSight)
{
    EXPECT_EQ(chart_.yAxis->label(), "");
    chart_.showPart({10, 20}, {100, 200});
    EXPECT_EQ(chart_.xAxis->label(), "(mm)");
    EXPECT_EQ(chart_.yAxis->label(), "GrayScale");
    chart_.setWhole({0, 52}, {0, 300});
    EXPECT_EQ(chart_.xAxis->label(), "");
    EXPECT_EQ(chart_.yAxis->label(), "");
}

TEST_F(TChartShown, MouseReadsNothingWhenThereIsNothing)
{
    const QSignalSpy pointed(&chart_, &TChart::pointedAt);
    chart_.removeAllSeries();
    QTest::mouseMove(&chart_, at(20, 20));
    ASSERT_EQ(pointed.size(), 1);
    EXPECT_EQ(pointed[0].first().toString(), "");
    chart_.addSeries({}, {}, chart::Role::First, QString());
    QTest::mouseMove(&chart_, at(24, 20));
    ASSERT_EQ(pointed.size(), 2);
    EXPECT_EQ(pointed[1].first().toString(), "");
}

TEST_F(TChartShown, TitleIsTheAccessibleName)
{
    chart_.setTitle(QStringLiteral("Grayscale Graph of CCD's Pixels (Z1-direction)"));
    EXPECT_EQ(chart_.title(), "Grayscale Graph of CCD's Pixels (Z1-direction)");
    EXPECT_EQ(chart_.accessibleName(), chart_.title());
    auto* accessible = QAccessible::queryAccessibleInterface(&chart_);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), chart_.title());
    EXPECT_EQ(accessible->role(), QAccessible::Chart);
    EXPECT_EQ(accessible->childCount(), 0);
}

TEST_F(TChartShown, OwnLabelsShowAndNumbersFillAViewWithoutThem)
{
    const auto texts = [this] {
        QVector<double> ticks;
        QVector<QString> labels;
        chart_.xAxis->ticker()->generate(chart_.xAxis->range(), QLocale::c(), u'g', 6, ticks, nullptr,
                                         &labels);
        return QStringList(labels.begin(), labels.end());
    };
    EXPECT_EQ(texts(), (QStringList{"0", "25", "50"}));
    drag(Qt::LeftButton, at(10, 150), at(20, 150));
    EXPECT_TRUE(texts().contains(QStringLiteral("13"))) << qPrintable(texts().join(u' '));
    chart_.setWhole({0, 52}, {0, 300});
    EXPECT_EQ(texts().last(), "\n(mm)") << "one line lower, clear of the 50";
}

TEST_F(TChartShown, PictureIsAtLeast1200PixelsWide)
{
    EXPECT_GE(chart::picture(chart_).width(), 1200);
    chart_.resize(500, 300);
    EXPECT_GE(chart::picture(chart_).width(), 1200);
    chart_.resize(2000, 900);
    EXPECT_EQ(chart::picture(chart_).size(), QSize(2000, 900));
}

} // namespace
} // namespace quorvel::grayscale
