#include "grayscale/axes.h"

#include <gmock/gmock.h>

namespace quorvel::grayscale {
namespace {

using link::TypeA;
using link::TypeB;
using link::TypeC;
using link::TypeD;
using ::testing::ElementsAre;

/// The labels in a line: a number that stands at its own value as it is, other texts with their place behind "@".
std::string inLine(const std::vector<AxisLabel>& labels)
{
    std::string line;
    for (const auto& label : labels) {
        const bool isNumber = label.text == std::to_string(static_cast<int>(label.at));
        line += (line.empty() ? "" : " ") + label.text;
        if (!isNumber) line += "@" + std::to_string(label.at).substr(0, 5);
    }
    return line;
}

constexpr auto kToFifty = "0 5 10 15 20 25 30 35 40 45 50";
constexpr auto kFiftyToHundred = "50 55 60 65 70 75 80 85 90 95 100";
constexpr auto kToHundred = "0 5 10 15 20 25 30 35 40 45 50 55 60 65 70 75 80 85 90 95 100";

TEST(PixelPosition, TypeACountsFromPixel256InSevenMicrometres)
{
    EXPECT_DOUBLE_EQ(pixelPosition(TypeA, 256), 0);
    EXPECT_DOUBLE_EQ(pixelPosition(TypeA, 1256), 7);
    EXPECT_DOUBLE_EQ(pixelPosition(TypeA, 1), -1.785);
}

TEST(PixelPosition, EveryOtherTypeCountsFromPixel64InFourteenMicrometres)
{
    for (const auto type : {TypeB, TypeC, TypeD}) {
        EXPECT_DOUBLE_EQ(pixelPosition(type, 64), -0.85);
        EXPECT_DOUBLE_EQ(pixelPosition(type, 3700), 50.054);
        EXPECT_DOUBLE_EQ(pixelPosition(type, 1), -1.732);
    }
}

TEST(VerticalLabels, StepByTwentyAndNameTheAxisAtTheTop)
{
    EXPECT_EQ(inLine(verticalLabels()),
              "0 20 40 60 80 100 120 140 160 180 200 220 240 260 280 GrayScale@300.0");
}

TEST(HorizontalLabels, EndAtFiftyForEveryDirectionButY)
{
    for (const auto type : {TypeA, TypeB, TypeC, TypeD}) {
        for (const auto* direction : {"X", "Z1", "Z2"}) {
            EXPECT_EQ(inLine(horizontalLabels(direction, type)), std::string(kToFifty) + " (mm)@51.50");
            EXPECT_THAT(endLines(direction, type), ElementsAre(0, 50));
        }
    }
}

TEST(HorizontalLabels, OfYOfTypeAEndAtFifty)
{
    EXPECT_EQ(inLine(horizontalLabels("Y", TypeA)), std::string(kToFifty) + " (mm)@51.50");
    EXPECT_THAT(endLines("Y", TypeA), ElementsAre(0, 50));
}

TEST(HorizontalLabels, OfYOfTypeBGoToHundredWithAThirdLine)
{
    EXPECT_EQ(inLine(horizontalLabels("Y", TypeB)),
              std::string(kToHundred) + " " + kToFifty + " " + kFiftyToHundred + " (mm)@101.5");
    EXPECT_THAT(endLines("Y", TypeB), ElementsAre(0, 50, 100));
}

TEST(HorizontalLabels, OfYOfTypesCAndDGoToHundredWithTheUnitBehindFifty)
{
    for (const auto type : {TypeC, TypeD}) {
        EXPECT_EQ(inLine(horizontalLabels("Y", type)),
                  std::string(kToHundred) + " " + kToFifty + " (mm)@51.50");
        EXPECT_THAT(endLines("Y", type), ElementsAre(0, 50));
    }
}

TEST(ChartTitle, NamesTheDirection)
{
    EXPECT_EQ(chartTitle("Z2"), "Grayscale Graph of CCD's Pixels (Z2-direction)");
    EXPECT_EQ(chartTitle("X"), "Grayscale Graph of CCD's Pixels (X-direction)");
}

} // namespace
} // namespace quorvel::grayscale
