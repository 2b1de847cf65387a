#include "chart/chart.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace quorvel::chart {
namespace {

QPalette paletteOf(Qt::GlobalColor paper, Qt::GlobalColor text)
{
    QPalette palette;
    palette.setColor(QPalette::Base, paper);
    palette.setColor(QPalette::Text, text);
    return palette;
}

const QPalette kLight = paletteOf(Qt::white, Qt::black);
const QPalette kDark = paletteOf(Qt::black, Qt::white);
constexpr Role kCurves[] = {Role::First, Role::Second, Role::Third, Role::Behind, Role::Mark};

/// As the Web Content Accessibility Guidelines reckon it, 1 to 21.
double contrast(const QColor& one, const QColor& other)
{
    const auto light = [](const QColor& colour) {
        const auto linear = [](double part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
               0.0722 * linear(colour.blueF()) + 0.05;
    };
    return std::max(light(one), light(other)) / std::min(light(one), light(other));
}

TEST(Colours, CurvesAndTextsStandOutOnLightAndOnDark)
{
    for (const auto& palette : {kLight, kDark}) {
        const auto colours = coloursOf(palette);
        EXPECT_GE(contrast(colours.ink, colours.paper), 7);
        for (const auto role : kCurves) {
            EXPECT_GE(contrast(colours.of(role), colours.paper), 3) << static_cast<int>(role);
        }
    }
}

TEST(Colours, TheEndsOfTheScaleAreRedOnAnyPaper)
{
    EXPECT_EQ(coloursOf(kLight).of(Role::End), QColor(Qt::red));
    EXPECT_EQ(coloursOf(kDark).of(Role::End), QColor(Qt::red));
}

/// A chart with a title, a curve in the legend and a text.
class ChartOnTheDesk : public ::testing::Test {
protected:
    ChartOnTheDesk()
    {
        chart.setPalette(kLight);
        title = new QCPTextElement(&chart, QStringLiteral("Title"));
        chart.plotLayout()->insertRow(0);
        chart.plotLayout()->addElement(0, 0, title);
        curve = chart.addGraph();
        text = new QCPItemText(&chart);
        chart.legend->setVisible(true);
        chart.give(curve, Role::First);
        chart.give(text, Role::Mark);
        chart.dress();
    }

    Chart chart;
    QCPTextElement* title;
    QCPGraph* curve;
    QCPItemText* text;
};

TEST_F(ChartOnTheDesk, FollowsThePaletteWhenItChanges)
{
    const auto light = chart.colours();
    EXPECT_EQ(curve->pen().color(), light.of(Role::First));
    chart.setPalette(kDark);
    const auto dark = chart.colours();
    ASSERT_NE(dark.paper, light.paper);
    EXPECT_EQ(curve->pen().color(), dark.of(Role::First));
    EXPECT_EQ(text->color(), dark.of(Role::Mark));
    EXPECT_EQ(chart.xAxis->tickLabelColor(), dark.ink);
    EXPECT_EQ(chart.xAxis->labelColor(), dark.ink);
    EXPECT_EQ(chart.yAxis2->grid()->pen().color(), dark.grid);
    EXPECT_EQ(title->textColor(), dark.ink);
    EXPECT_EQ(chart.legend->textColor(), dark.ink);
    EXPECT_EQ(chart.legend->item(0)->textColor(), dark.ink);
}

TEST_F(ChartOnTheDesk, ItsLegendMayHaveARowThatIsNotFull)
{
    chart.legend->setFillOrder(QCPLayoutGrid::foColumnsFirst);
    chart.legend->setWrap(2);
    chart.addGraph();
    chart.addGraph();
    ASSERT_EQ(chart.legend->itemCount(), 4) << "the empty place counts";
    chart.setPalette(kDark);
    EXPECT_EQ(chart.legend->item(2)->textColor(), chart.colours().ink);
}

TEST_F(ChartOnTheDesk, FollowsTheSizeOfTheDesktopsFont)
{
    auto font = chart.font();
    font.setPointSize(19);
    chart.setFont(font);
    EXPECT_EQ(chart.xAxis->tickLabelFont().pointSize(), 19);
    EXPECT_EQ(chart.legend->item(0)->font().pointSize(), 19);
    EXPECT_EQ(text->font().pointSize(), 19);
    EXPECT_GT(title->font().pointSizeF(), 19);
    font.setPixelSize(40);
    chart.setFont(font);
    EXPECT_EQ(chart.yAxis->tickLabelFont().pixelSize(), 40);
    EXPECT_GT(title->font().pixelSize(), 40);
}

TEST_F(ChartOnTheDesk, IsDarkOnWhiteOnPaperOnly)
{
    chart.setPalette(kDark);
    {
        const Chart::OnPaper paper(chart);
        EXPECT_EQ(chart.colours().paper, QColor(Qt::white));
        EXPECT_EQ(curve->pen().color(), coloursOnPaper().of(Role::First));
    }
    EXPECT_EQ(chart.colours().paper, QColor(Qt::black));
    EXPECT_EQ(curve->pen().color(), coloursOf(kDark).of(Role::First));
}

} // namespace
} // namespace quorvel::chart
