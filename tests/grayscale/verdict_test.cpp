#include "grayscale/verdict.h"

#include <QJsonArray>

#include <gmock/gmock.h>

namespace quorvel::grayscale {
namespace {

/// Nothing is wrong.
ProfileFigures good()
{
    ProfileFigures figures;
    figures.firstPixel = 125;
    figures.lastPixel = 3696;
    figures.lowest = {1800, 16};
    figures.highest = {2900, 214};
    figures.mean = 178.25;
    figures.lamp = {180.4, 0.76};
    figures.shadow = {24.64, 1.5, 0.12, 0.13, 0.91};
    return figures;
}

TEST(Verdict, OfACleanSensorSaysSoWithItsFigures)
{
    EXPECT_EQ(verdict(good()),
              QStringList("Clean: lamp level 180, even to 76 %, shadow of 1.50 mm at 24.6 mm."));
}

TEST(Verdict, NamesTheDeepestDipsAndCountsTheOthers)
{
    auto figures = good();
    figures.dips = {{37.3, 0.12, 0.27}, {5, 0.1, 0.06},  {12, 0.8, 0.4},
                    {20, 0.1, 0.2},     {30, 0.1, 0.11}, {31, 0.1, 0.12}};
    EXPECT_EQ(verdict(figures),
              (QStringList{"Dirt at 12.0 mm, 0.80 mm wide, 40 % deep.", "Dust at 37.3 mm, 27 % deep.",
                           "Dust at 20.0 mm, 20 % deep.", "2 more places are dusty."}));
}

TEST(Verdict, TheSeamIsNothingToClean)
{
    auto figures = good();
    figures.dips = {{49.6, 0.07, 0.4, true}};
    EXPECT_TRUE(verdict(figures)[0].startsWith("Clean: "));
}

TEST(Verdict, SaysWhatIsWrongWithTheLamp)
{
    auto figures = good();
    figures.lamp = {62, 0.31};
    figures.saturated = {1, 2, 3};
    EXPECT_EQ(verdict(figures),
              (QStringList{"Too bright: 3 pixels are at the end of the scale.",
                           "The lamp is weak: its level is 62 of 255.",
                           "The lamp is uneven: its darkest part has 31 % of the brightest."}));
    figures = good();
    figures.lamp.reset();
    figures.shadow.reset();
    figures.highest.value = 9;
    EXPECT_EQ(verdict(figures), QStringList("No light: the lamp is out, or covered."));
    figures.highest.value = 200;
    EXPECT_EQ(verdict(figures), QStringList("Too few pixels to judge the lamp."));
    figures.lastPixel = 0;
    EXPECT_EQ(verdict(figures), QStringList("There are no pixels between the ends of the sensor."));
}

TEST(Verdict, SaysWhatIsWrongWithTheShadowAndSinglePixels)
{
    auto figures = good();
    figures.shadow->rightEdgeMm = 0.42;
    figures.dark = {77};
    figures.damaged = {1, 2, 3, 4, 5};
    EXPECT_EQ(verdict(figures), (QStringList{"The shadow of the wire is blurred: its edge is 0.42 mm wide.",
                                             "Dark without reason: pixel 77.",
                                             "Arrived damaged, not judged: pixels 1, 2, 3 and 2 more."}));
    figures = good();
    figures.shadow.reset();
    EXPECT_EQ(verdict(figures), QStringList("No shadow of a wire is seen."));
}

TEST(Verdict, FiguresAsJsonHaveTheirUnitsInTheirNames)
{
    auto figures = good();
    figures.dips = {{37.31234, 0.1, 0.2749}};
    figures.dark = {77};
    const auto object = toJson(figures);
    EXPECT_EQ(object.keys(),
              (QStringList{"damagedPixels", "darkPixels", "dips", "firstPixel", "lamp", "lastPixel", "max",
                           "maxPixel", "mean", "min", "minPixel", "saturatedPixels", "shadow", "verdict"}));
    const auto dip = object["dips"].toArray()[0].toObject();
    EXPECT_EQ(dip,
              (QJsonObject{{"placeMm", 37.3123}, {"widthMm", 0.1}, {"depthPercent", 27.5}, {"seam", false}}));
    EXPECT_EQ(object["lamp"].toObject(), (QJsonObject{{"level", 180.4}, {"evennessPercent", 76}}));
    EXPECT_EQ(object["shadow"].toObject(), (QJsonObject{{"centreMm", 24.64},
                                                        {"widthMm", 1.5},
                                                        {"leftEdgeMm", 0.12},
                                                        {"rightEdgeMm", 0.13},
                                                        {"depthPercent", 91}}));
    EXPECT_EQ(object["verdict"].toArray(),
              QJsonArray({"Dust at 37.3 mm, 27 % deep.", "Dark without reason: pixel 77."}));
    EXPECT_TRUE(toJson({})["lamp"].isNull());
}

} // namespace
} // namespace quorvel::grayscale
