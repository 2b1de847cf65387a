#include "calibration/fit.h"

#include "text/number.h"

#include <algorithm>
#include <cmath>

namespace quorvel::calibration {

namespace {

constexpr double kHalfMicrometre = 0.0005; // mm

/// A sum in single precision.
void add(float& sum, double term) { sum = static_cast<float>(static_cast<double>(sum) + term); }

bool allDialsEqual(const Points& points)
{
    return std::all_of(points.begin(), points.end(),
                       [&](const Point& point) { return point.dial == points.front().dial; });
}

bool solve(const Points& points, Fit& fit)
{
    float sx = 0;
    float sy = 0;
    float sxy = 0;
    float sxx = 0;
    for (const auto& [x, y] : points) {
        add(sx, x);
        add(sy, y);
        add(sxy, static_cast<double>(x) * y);
        add(sxx, static_cast<double>(x) * x);
    }
    const double n = kPoints;
    const double d = n * sxx - static_cast<double>(sx) * sx;
    if (d == 0) return false;
    fit.slope = static_cast<float>((n * sxy - static_cast<double>(sx) * sy) / d);
    fit.intercept = static_cast<float>((static_cast<double>(sy) * sxx - static_cast<double>(sx) * sxy) / d);
    return std::isfinite(fit.slope) && std::isfinite(fit.intercept);
}

bool judge(const Points& points, Fit& fit)
{
    float squares = 0;
    for (int i = 0; i < kPoints; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const auto& [x, y] = points[at];
        const double e = y - (static_cast<double>(fit.slope) * x + fit.intercept);
        fit.residuals[at] = e;
        if (std::fabs(e) > fit.maxError) {
            fit.maxError = static_cast<float>(std::fabs(e));
            fit.worst = i;
        }
        add(squares, e * e);
    }
    fit.nonlinearError = std::sqrt(static_cast<double>(squares) / (kPoints - 1));
    return std::isfinite(squares) && std::isfinite(fit.maxError);
}

} // namespace

std::optional<Fit> fitLine(const Points& points)
{
    Fit fit;
    // Rounded sums of equal dial readings may leave a small denominator instead of none.
    if (allDialsEqual(points) || !solve(points, fit) || !judge(points, fit)) return std::nullopt;
    return fit;
}

// About the means, so that large dial readings with small steps lose nothing.
std::optional<ExactFit> fitExactly(const Points& points)
{
    if (allDialsEqual(points)) return std::nullopt;
    double meanX = 0;
    double meanY = 0;
    for (const auto& [x, y] : points) {
        meanX += static_cast<double>(x) / kPoints;
        meanY += static_cast<double>(y) / kPoints;
    }
    double sxy = 0;
    double sxx = 0;
    for (const auto& [x, y] : points) {
        sxy += (x - meanX) * (y - meanY);
        sxx += (x - meanX) * (x - meanX);
    }
    ExactFit fit{.slope = sxy / sxx, .intercept = meanY - sxy / sxx * meanX};
    double squares = 0;
    for (const auto& [x, y] : points) {
        const double e = y - (fit.slope * x + fit.intercept);
        fit.maxError = std::max(fit.maxError, std::fabs(e));
        squares += e * e;
    }
    fit.nonlinearError = std::sqrt(squares / (kPoints - 1));
    return fit;
}

std::string lineText(const Fit& fit)
{
    return "Y=" + text::format(fit.slope, "#0.0000") + "*X+(" + text::format(fit.intercept, "#0.000") + ")";
}

std::string lineText(const ExactFit& fit)
{
    return "Y=" + text::format(fit.slope, "#0.0000") + "*X+(" + text::format(fit.intercept, "#0.000") + ")";
}

bool losesDigits(const Fit& fit, const ExactFit& exact, const Points& points)
{
    const bool isOff = std::any_of(points.begin(), points.end(), [&](const Point& point) {
        const double x = point.dial;
        return std::fabs(static_cast<double>(fit.slope) * x + fit.intercept -
                         (exact.slope * x + exact.intercept)) > kHalfMicrometre;
    });
    return isOff || std::fabs(fit.maxError - exact.maxError) > kHalfMicrometre ||
           std::fabs(fit.nonlinearError - exact.nonlinearError) > kHalfMicrometre;
}

std::string fitText(const Fit& fit)
{
    return "X: " + lineText(fit) + "\r\nNonlinear Error: " + text::format(fit.nonlinearError, "0.000") +
           ", Max Error: " + text::format(fit.maxError, "0.000");
}

} // namespace quorvel::calibration
