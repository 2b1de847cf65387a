#include "calibration/errorchart.h"
#include "calibration/fitchart.h"

#include "chart/plot.h"
#include "support/bench_on_the_bus.h"

#include <QLabel>

namespace quorvel::calibration {
namespace {

/// The line reading = dial + `intercept`, which the point `off` misses by 0.5.
FittedReading fitted(const char* name, float intercept, std::size_t off)
{
    Points points;
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i].dial = static_cast<float>(i);
        points[i].reading = points[i].dial + intercept + (i == off ? 0.5F : 0.0F);
    }
    return {QString::fromLatin1(name), points, *fitLine(points)};
}

class Chart : public ::testing::Test {
protected:
    QCustomPlot& plot() { return *test::child<QCustomPlot>(chart, QString()); }
    /// The graphs whose points have this shape.
    std::vector<QCPGraph*> graphs(QCPScatterStyle::ScatterShape shape)
    {
        std::vector<QCPGraph*> found;
        for (int i = 0; i < plot().graphCount(); ++i) {
            if (plot().graph(i)->scatterStyle().shape() == shape) found.push_back(plot().graph(i));
        }
        return found;
    }
    QStringList legend()
    {
        QStringList names;
        for (int i = 0; i < plot().legend->itemCount(); ++i) {
            names << qobject_cast<QCPPlottableLegendItem*>(plot().legend->item(i))->plottable()->name();
        }
        return names;
    }
    QStringList texts()
    {
        QStringList found;
        for (int i = 0; i < plot().itemCount(); ++i) {
            if (auto* text = qobject_cast<QCPItemText*>(plot().item(i))) found << text->text();
        }
        return found;
    }

    FitChart chart;
};

TEST_F(Chart, RingsTheLargestResidual)
{
    const auto x = fitted("X_Data", 1, 7);
    chart.add(x);
    const auto rings = graphs(QCPScatterStyle::ssCircle);
    ASSERT_EQ(rings.size(), 1U);
    ASSERT_EQ(rings[0]->dataCount(), 1);
    EXPECT_EQ(rings[0]->dataMainKey(0), 7);
    EXPECT_NEAR(rings[0]->dataMainValue(0), 0.4364, 0.0001) << "0.5 less what the line takes of it";
    EXPECT_EQ(texts(), QStringList{"0.4364"});
}

TEST_F(Chart, ShowsThePointsTheirLineAndTheirResiduals)
{
    chart.add(fitted("X_Data", 1, 7));
    const auto discs = graphs(QCPScatterStyle::ssDisc); // points above, residuals below
    const auto lines = graphs(QCPScatterStyle::ssNone);
    ASSERT_EQ(discs.size(), 2U);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(discs[0]->dataCount(), 11);
    EXPECT_EQ(discs[0]->dataMainValue(7), 8.5);
    EXPECT_EQ(discs[1]->dataCount(), 11);
    EXPECT_NEAR(discs[1]->dataMainValue(7), discs[0]->dataMainValue(7) - lines[0]->dataMainValue(7), 1e-6);
    EXPECT_TRUE(discs[0]->valueAxis()->range().contains(8.5));
    EXPECT_TRUE(chart.accessibleDescription().startsWith("X_Data: X: Y=")) << "for a screen reader";
}

TEST_F(Chart, LegendIsNotWhereTheLineIs)
{
    const auto place = [this] { return plot().axisRect(0)->insetLayout()->insetAlignment(0); };
    chart.add(fitted("X_Data", 1, 7));
    EXPECT_EQ(place(), Qt::AlignTop | Qt::AlignLeft);
    chart.clear();
    auto falling = fitted("X_Data", 1, 7);
    for (auto& point : falling.points)
        point.reading = -point.reading;
    falling.fit = *fitLine(falling.points);
    chart.add(falling);
    EXPECT_EQ(place(), Qt::AlignTop | Qt::AlignRight);
}

TEST_F(Chart, ShowsBothSeriesOfZSideBySide)
{
    chart.add(fitted("Z1_Data", 1, 7));
    chart.add(fitted("Z2_Data", -20, 2));
    EXPECT_EQ(chart.count(), 2);
    const auto rings = graphs(QCPScatterStyle::ssCircle);
    ASSERT_EQ(rings.size(), 2U);
    EXPECT_EQ(rings[1]->dataMainKey(0), 2);
    const auto names = legend();
    ASSERT_EQ(names.size(), 4);
    EXPECT_EQ(names[0], "Z1_Data");
    EXPECT_TRUE(names[1].startsWith("Y=1.0091*X+(")) << qPrintable(names[1]);
    EXPECT_EQ(names[2], "Z2_Data");
    const auto discs = graphs(QCPScatterStyle::ssDisc);
    EXPECT_NE(discs[0]->pen().color(), discs[2]->pen().color());
    EXPECT_TRUE(discs[0]->valueAxis()->range().contains(-20));
    EXPECT_TRUE(discs[0]->valueAxis()->range().contains(11));
}

TEST_F(Chart, IsEmptiedOfEverything)
{
    chart.add(fitted("Z1_Data", 1, 7));
    chart.add(fitted("Z2_Data", 1, 7));
    chart.clear();
    EXPECT_EQ(chart.count(), 0);
    EXPECT_EQ(plot().graphCount(), 0);
    EXPECT_TRUE(legend().isEmpty());
    EXPECT_TRUE(texts().isEmpty());
    EXPECT_EQ(chart.accessibleDescription(), "");
    chart.add(fitted("X_Data", 1, 7));
    EXPECT_EQ(legend().size(), 2);
}

TEST_F(Chart, KeepsTheNumbersBelowInMm)
{
    auto& numbers = *test::child<QLabel>(chart, "Numbers");
    EXPECT_TRUE(numbers.isHidden());
    chart.add(fitted("Z1_Data", 1, 7));
    chart.add(fitted("Z2_Data", -20, 2));
    EXPECT_FALSE(numbers.isHidden());
    EXPECT_EQ(numbers.text(),
              "Z1_Data: Y=1.0091*X+(1.000), Nonlinear Error: 0.1477 mm, Max Error: 0.4364 mm, at point 7\n"
              "Z2_Data: Y=0.9864*X+(-19.886), Nonlinear Error: 0.1438 mm, Max Error: 0.4136 mm, at point 2");
    for (auto* rect : plot().axisRects()) {
        for (auto* axis : {rect->axis(QCPAxis::atLeft), rect->axis(QCPAxis::atBottom)})
            EXPECT_TRUE(axis->label().isEmpty() || axis->label().endsWith(" in mm"))
                << qPrintable(axis->label());
    }
    chart.clear();
    EXPECT_TRUE(numbers.isHidden());
    EXPECT_EQ(numbers.text(), "");
}

TEST(ChartOfErrors, ShowsRunsThatHaveErrorsBetweenTheLimits)
{
    RunJudged found;
    found.columns.resize(1);
    for (std::size_t i = 0; i < kPoints; ++i) {
        found.columns[0].points[i].dial = static_cast<double>(i);
        found.columns[0].points[i].error = i == 4 ? -0.03 : 0.01;
    }
    found.columns[0].worst = 4;
    RunJudged left;
    left.kind = RunKind::Left;
    left.columns.resize(1);
    ErrorChart chart;
    chart.show({found, left}, 0.02);
    EXPECT_EQ(chart.count(), 1) << "nothing was taken as left";
    auto& plot = *test::child<QCustomPlot>(chart, QString());
    ASSERT_EQ(plot.graphCount(), 3) << "errors and two limits";
    EXPECT_EQ(plot.graph(0)->name(), "As found");
    EXPECT_EQ(plot.graph(0)->dataCount(), 11);
    EXPECT_EQ(plot.graph(0)->dataMainValue(4), -0.03);
    EXPECT_EQ(plot.graph(1)->dataMainValue(0), 0.02);
    EXPECT_EQ(plot.graph(2)->dataMainValue(0), -0.02);
    EXPECT_TRUE(plot.yAxis->range().contains(-0.03));
    EXPECT_FALSE(chart.picture({400, 300}).isNull());
    chart.show({}, 0.02);
    EXPECT_EQ(chart.count(), 0);
    EXPECT_EQ(plot.graphCount(), 0);
}

} // namespace
} // namespace quorvel::calibration
