#include "calibration/fit.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace quorvel::calibration {
namespace {

Points lineOf(double slope, double intercept, double step = 1)
{
    Points points;
    for (int i = 0; i < kPoints; ++i) {
        const double x = step * i;
        points[static_cast<std::size_t>(i)] = {static_cast<float>(x),
                                               static_cast<float>(slope * x + intercept)};
    }
    return points;
}

TEST(Fit, OfPerfectDataHasNoErrors)
{
    const auto fit = fitLine(lineOf(2, 1));
    ASSERT_TRUE(fit);
    EXPECT_EQ(fitText(*fit), "X: Y=2.0000*X+(1.000)\r\nNonlinear Error: 0.000, Max Error: 0.000");
}

TEST(Fit, TextRoundsAndKeepsTheSign)
{
    Fit fit;
    fit.slope = 1.00234F;
    fit.intercept = -0.0127F;
    fit.nonlinearError = 0.0042;
    fit.maxError = 0.0081F;
    EXPECT_EQ(fitText(fit), "X: Y=1.0023*X+(-0.013)\r\nNonlinear Error: 0.004, Max Error: 0.008");
}

TEST(Fit, DialReadingIsTheIndependentVariable)
{
    const auto fit = fitLine(lineOf(-0.5, 10, 0.25));
    ASSERT_TRUE(fit);
    EXPECT_FLOAT_EQ(fit->slope, -0.5F);
    EXPECT_FLOAT_EQ(fit->intercept, 10);
}

// One point 11 above the line y = 0 at the middle of 0..10: the fitted line is y = 1, the residuals are 10 once and
// -1 ten times, so SS = 110 and the nonlinear error the root of 11.
TEST(Fit, DividesTheSquaresByTen)
{
    auto points = lineOf(0, 0);
    points[5].reading = 11;
    const auto fit = fitLine(points);
    ASSERT_TRUE(fit);
    EXPECT_NEAR(fit->nonlinearError, std::sqrt(11.0), 1e-6);
    EXPECT_FLOAT_EQ(fit->maxError, 10);
    EXPECT_EQ(fit->worst, 5);
    EXPECT_NEAR(fit->residuals[0], -1, 1e-6);
}

TEST(Fit, IsNoneWhenAllDialReadingsAreEqual)
{
    auto points = lineOf(1, 0, 0);
    for (auto& point : points) {
        point.dial = 0.1F; // whose rounded sums do not cancel
    }
    points[3].reading = 5;
    EXPECT_FALSE(fitLine(points));
}

TEST(Fit, IsNoneBeyondSinglePrecision)
{
    EXPECT_FALSE(fitLine(lineOf(1, 0, 1e30)));
    EXPECT_FALSE(fitLine(lineOf(1, 3e38)));
}

// Sums are rounded to single precision after each addition: 2^24 + 1 is 2^24 there.
TEST(Fit, SumsAreHeldInSinglePrecision)
{
    auto points = lineOf(0, 0);
    points[0].reading = 16777216;
    for (std::size_t i = 1; i < points.size(); ++i) {
        points[i].reading = 1;
    }
    const auto fit = fitLine(points);
    ASSERT_TRUE(fit);
    // Sy = 2^24 (not 2^24 + 10), Sxy = 55, Sx = 55, Sxx = 385, D = 1210
    EXPECT_EQ(fit->slope, static_cast<float>((11.0 * 55 - 55.0 * 16777216) / 1210));
    EXPECT_EQ(fit->intercept, static_cast<float>((16777216.0 * 385 - 55.0 * 55) / 1210));
}

/// Least squares about the mean, in long double: another formula and another precision.
struct Reference {
    long double slope, intercept, nonlinear, worst;
};

Reference referenceOf(const Points& points)
{
    long double mx = 0;
    long double my = 0;
    for (const auto& point : points) {
        mx += point.dial / 11.0L;
        my += point.reading / 11.0L;
    }
    long double xy = 0;
    long double xx = 0;
    for (const auto& point : points) {
        xy += (point.dial - mx) * (point.reading - my);
        xx += (point.dial - mx) * (point.dial - mx);
    }
    Reference reference{xy / xx, my - xy / xx * mx, 0, 0};
    long double squares = 0;
    for (const auto& point : points) {
        const long double e = point.reading - (reference.slope * point.dial + reference.intercept);
        squares += e * e;
        reference.worst = std::max(reference.worst, std::fabs(e));
    }
    reference.nonlinear = std::sqrt(squares / 10);
    return reference;
}

// A sum of 11 terms, each addition rounded to 2^-24 of the sum, is off by at most 11 x 2^-24 of the sum of the terms'
// magnitudes; the bounds below carry that through the formulas.
TEST(Fit, AgreesWithDoublePrecisionOnAThousandTables)
{
    std::mt19937 random(4711);
    std::uniform_real_distribution<double> slopes(0.5, 2);
    std::uniform_real_distribution<double> intercepts(-20, 20);
    std::uniform_real_distribution<double> noise(-0.05, 0.05);
    std::uniform_real_distribution<double> steps(0.5, 2);
    for (int table = 0; table < 1000; ++table) {
        auto points = lineOf(slopes(random), intercepts(random), steps(random));
        double sx = 0, sy = 0, sxy = 0, sxx = 0;
        for (auto& [x, y] : points) {
            x += static_cast<float>(noise(random));
            y += static_cast<float>(noise(random));
            sx += std::fabs(x), sy += std::fabs(y), sxy += std::fabs(x * y), sxx += x * x;
        }
        const auto fit = fitLine(points);
        ASSERT_TRUE(fit);
        const auto reference = referenceOf(points);
        const double u = 11 * std::ldexp(1.0, -24);
        const double d = 11 * sxx - sx * sx;
        const double dError = 2 * u * (11 * sxx + sx * sx);
        const double slopeBound =
            (2 * u * (11 * sxy + sx * sy) + dError * std::fabs(fit->slope)) / (d - dError) +
            1e-7 * std::fabs(fit->slope);
        const double interceptBound =
            (2 * u * (sy * sxx + sx * sxy) + dError * std::fabs(fit->intercept)) / (d - dError) +
            1e-7 * std::fabs(fit->intercept);
        EXPECT_NEAR(fit->slope, static_cast<double>(reference.slope), slopeBound);
        EXPECT_NEAR(fit->intercept, static_cast<double>(reference.intercept), interceptBound);
        const double residualBound = slopeBound * 20 + interceptBound + 1e-6;
        EXPECT_NEAR(fit->maxError, static_cast<double>(reference.worst), residualBound);
        EXPECT_NEAR(fit->nonlinearError, static_cast<double>(reference.nonlinear), residualBound);
        EXPECT_LT(slopeBound, 1e-3);
    }
}

// With any one of the four sums in double precision the text is another: "Y=0.9959*X+(-19.786)" with that of x,
// "Y=0.9955*X+(-19.765)" with that of y, "Y=0.9959*X+(-19.784)" with that of the products and "Y=0.9958*X+(-19.780)"
// with that of the squares.
TEST(Fit, EachOfTheFourSumsIsHeldInSinglePrecision)
{
    const Points points{{{50.1F, 30.1F},
                         {50.3F, 30.31F},
                         {50.5F, 30.51F},
                         {50.7F, 30.71F},
                         {50.9F, 30.91F},
                         {51.1F, 31.11F},
                         {51.3F, 31.31F},
                         {51.5F, 31.5F},
                         {51.7F, 31.7F},
                         {51.9F, 31.903F},
                         {52.1F, 32.1F}}};
    const auto fit = fitLine(points);
    ASSERT_TRUE(fit);
    EXPECT_EQ(fitText(*fit), "X: Y=0.9956*X+(-19.767)\r\nNonlinear Error: 0.004, Max Error: 0.010");
}

} // namespace
} // namespace quorvel::calibration
