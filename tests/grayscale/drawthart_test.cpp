#include "grayscale/drawthart.h"

#include <gtest/gtest.h>

namespace quorvel::grayscale {
namespace {

class DrawThart : public ::testing::Test {
protected:
    void draw(std::string_view direction, link::InstrumentType type, int count)
    {
        PixelArray array;
        array.store(std::vector<std::int16_t>(static_cast<std::size_t>(count), 77));
        chart_.removeAllSeries();
        drawThart(chart_, array, direction, type);
    }
    /// Two points at 0 and 300, red.
    void expectRedLine(int series, double at)
    {
        const auto* line = chart_.graph(series);
        ASSERT_EQ(line->dataCount(), 2);
        EXPECT_EQ(line->data()->at(0)->key, at);
        EXPECT_EQ(line->data()->at(1)->key, at);
        EXPECT_EQ(line->data()->at(0)->value, 0);
        EXPECT_EQ(line->data()->at(1)->value, 300);
        EXPECT_EQ(line->pen().color(), QColor(Qt::red));
    }

    TChart chart_;
};

TEST_F(DrawThart, DrawsOnePointPerPixelAtItsPosition)
{
    draw("X", link::TypeA, 1256);
    ASSERT_EQ(chart_.graph(0)->dataCount(), 1256);
    EXPECT_DOUBLE_EQ(chart_.graph(0)->data()->at(255)->key, 0);
    EXPECT_DOUBLE_EQ(chart_.graph(0)->data()->at(1255)->key, 7);
    EXPECT_EQ(chart_.graph(0)->data()->at(1255)->value, 77);
    EXPECT_NE(chart_.graph(0)->pen().color(), QColor(Qt::red));
}

TEST_F(DrawThart, MarksBothEndsInRed)
{
    draw("X", link::TypeC, 3760);
    ASSERT_EQ(chart_.graphCount(), 3);
    expectRedLine(1, 0);
    expectRedLine(2, 50);
}

TEST_F(DrawThart, YOfTypeBHasAThirdRedLine)
{
    draw("Y", link::TypeB, 7330);
    ASSERT_EQ(chart_.graphCount(), 4);
    expectRedLine(3, 100);
    EXPECT_EQ(chart_.positionLabels(), horizontalLabels("Y", link::TypeB));
}

TEST_F(DrawThart, YOfTypeCShowsLabelsUpTo100WithTwoRedLines)
{
    draw("Y", link::TypeC, 3760);
    EXPECT_EQ(chart_.graphCount(), 3);
    EXPECT_EQ(chart_.positionLabels(), horizontalLabels("Y", link::TypeC));
    EXPECT_TRUE(chart_.xAxis->range().contains(100));
}

TEST_F(DrawThart, NoPixelsStillGiveAxesLabelsAndRedLines)
{
    draw("Z1", link::TypeC, 0);
    EXPECT_EQ(chart_.graph(0)->dataCount(), 0);
    EXPECT_EQ(chart_.graphCount(), 3);
    EXPECT_EQ(chart_.brightnessLabels(), verticalLabels());
    EXPECT_EQ(chart_.yAxis->range(), QCPRange(0, 300));
    EXPECT_TRUE(chart_.xAxis->range().contains(QCPRange(0, 51.5).upper));
}

TEST_F(DrawThart, TheWholeHoldsEveryPixelAndLabel)
{
    for (const auto type : {link::TypeA, link::TypeB, link::TypeC, link::TypeD}) {
        draw("X", type, 20000);
        EXPECT_LT(chart_.xAxis->range().lower, pixelPosition(type, 1));
        EXPECT_GT(chart_.xAxis->range().upper, pixelPosition(type, 20000));
        EXPECT_EQ(chart_.yAxis->range(), QCPRange(0, 300));
    }
}

} // namespace
} // namespace quorvel::grayscale
