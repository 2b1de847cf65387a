#include "site/trend.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

namespace quorvel::site {
namespace {

using protocol::Sensor;
using ::testing::ElementsAre;
using ::testing::Pair;

Reading readingAt(int second, const std::string& x, const std::string& y)
{
    Reading reading;
    reading.address = 5;
    reading.time = QDateTime(QDate(2024, 5, 17), QTime(9, 0), Qt::UTC).addSecs(second);
    if (!x.empty()) reading.received = {x, y, std::nullopt, std::nullopt};
    reading.outcome = x.empty() ? "silent" : "complete";
    return reading;
}

/// A point every ten seconds.
TrendPoints pointsOf(const std::vector<std::pair<double, double>>& places)
{
    TrendPoints points;
    for (const auto& [x, y] : places)
        points.push_back({static_cast<double>(points.size()) * 10, {x, y, 0, 0}, 5});
    return points;
}

constexpr double kGap = std::numeric_limits<double>::quiet_NaN();
constexpr Span kAll{0, 1e12};

TEST(Trend, KeepsReadingsAndGaps)
{
    Trend trend;
    trend.take(readingAt(0, "+1.50000", "-0.25000"));
    trend.take(readingAt(10, "", ""));
    trend.take(readingAt(20, "+1.6000", "-0.25000"));
    trend.take(readingAt(15, "+9.00000", "+9.00000")); // the clock was set back
    const auto& points = trend.of(5);
    ASSERT_EQ(points.size(), 3U);
    EXPECT_EQ(points[0].of(Sensor::X), 1.5);
    EXPECT_EQ(points[0].decimals, 5);
    EXPECT_TRUE(std::isnan(points[1].of(Sensor::X)));
    EXPECT_TRUE(std::isnan(points[0].of(Sensor::Z1)));
    EXPECT_EQ(points[2].time - points[0].time, 20);
    EXPECT_TRUE(trend.of(6).empty());
}

TEST(Trend, MemoryIsBoundedAndTheNewestStays)
{
    Trend trend;
    for (int i = 0; i < 250'000; ++i)
        trend.take(readingAt(i, "+1.50000", "-0.25000"));
    const auto& points = trend.of(5);
    EXPECT_LE(points.size(), Trend::kMostOfOne);
    EXPECT_GE(points.size(), Trend::kMostOfOne / 8 * 7 - 1);
    EXPECT_EQ(points.back().time - points.front().time, static_cast<double>(points.size() - 1));
}

TEST(TrendFigures, MeanSwingAndDriftAreThoseOfTheSpan)
{
    const auto points = pointsOf({{9, 0}, {1, 2}, {2, 2}, {kGap, kGap}, {4, 2}, {-9, 0}});
    const auto figures = figuresOf(points, Sensor::X, {10, 40});
    EXPECT_EQ(figures.count, 3);
    EXPECT_NEAR(figures.mean, 7.0 / 3, 1e-12);
    EXPECT_EQ(figures.swing, 3);
    ASSERT_TRUE(figures.driftPerHour);
    EXPECT_NEAR(*figures.driftPerHour, 360, 1e-9); // 0.1 mm/s
    EXPECT_NEAR(*figuresOf(points, Sensor::Y, {10, 40}).driftPerHour, 0, 1e-12);
    EXPECT_EQ(figuresOf(points, Sensor::X, {100, 200}).count, 0);
    EXPECT_FALSE(figuresOf(points, Sensor::X, {10, 15}).driftPerHour) << "one point has no drift";
}

TEST(TrendFigures, DriftKeepsItsDigitsFarFrom1970)
{
    TrendPoints points;
    for (int i = 0; i < 26'000; ++i)
        points.push_back({1.7e9 + i * 10, {1 + i * 1e-6, 0, 0, 0}, 5});
    EXPECT_NEAR(*figuresOf(points, Sensor::X, kAll).driftPerHour, 3.6e-4, 1e-10);
}

TEST(Thinned, FewPointsAreAllThereWithTheirGapsAndTheNeighboursOfTheSpan)
{
    const auto points = pointsOf({{1, 0}, {2, 0}, {kGap, 0}, {4, 0}, {5, 0}});
    const auto pairs = thinned(points, Sensor::X, {10, 30}, 100);
    ASSERT_EQ(pairs.size(), 5U);
    EXPECT_EQ(pairs[0], std::pair(0.0, 1.0));
    EXPECT_TRUE(std::isnan(pairs[2].second));
    EXPECT_EQ(pairs[4], std::pair(40.0, 5.0));
}

TEST(Thinned, ManyPointsKeepEveryPeakInTheOrderOfTime)
{
    auto points = pointsOf(std::vector<std::pair<double, double>>(1000, {1, 0}));
    points[321].mm[0] = 7;
    points[322].mm[0] = -7;
    const auto pairs = thinned(points, Sensor::X, {0, 9990}, 50);
    EXPECT_LE(pairs.size(), 100U);
    EXPECT_THAT(pairs, ::testing::IsSupersetOf({Pair(3210, 7), Pair(3220, -7)}));
    EXPECT_TRUE(std::is_sorted(pairs.begin(), pairs.end(), [](auto a, auto b) { return a.first < b.first; }));
}

TEST(Path, ManyPointsKeepTheirExtremes)
{
    auto points = pointsOf(std::vector<std::pair<double, double>>(1000, {1, 1}));
    points[100].mm = {5, 1, 0, 0};
    points[600].mm = {1, -5, 0, 0};
    const auto pairs = pathOf(points, kAll, 20);
    EXPECT_LE(pairs.size(), 80U);
    EXPECT_THAT(pairs, ::testing::IsSupersetOf({Pair(5, 1), Pair(1, -5)}));
    EXPECT_THAT(pathOf(pointsOf({{1, 2}, {3, 4}}), kAll, 20), ElementsAre(Pair(1, 2), Pair(3, 4)));
}

TEST(Nearest, GapsAreSteppedOver)
{
    const auto points = pointsOf({{1, 0}, {2, 0}, {kGap, kGap}, {4, 0}});
    EXPECT_EQ(nearest(points, 12)->time, 10);
    EXPECT_EQ(nearest(points, 22)->time, 30);
    EXPECT_EQ(nearest(points, 1e9)->time, 30);
    EXPECT_EQ(stepped(points, 10, 1)->time, 30);
    EXPECT_EQ(stepped(points, 30, -2)->time, 0);
    EXPECT_EQ(stepped(points, 30, 10)->time, 30);
    EXPECT_EQ(nearest({}, 5), nullptr);
    EXPECT_EQ(stepped(pointsOf({{kGap, kGap}}), 5, 1), nullptr);
}

} // namespace
} // namespace quorvel::site
