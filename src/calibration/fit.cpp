#include "calibration/fit.h"

#include "text/number.h"

#include <algorithm>
#include <cmath>

namespace quorvel::calibration {

namespace {

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

std::string lineText(const Fit& fit)
{
    return "Y=" + text::format(fit.slope, "#0.0000") + "*X+(" + text::format(fit.intercept, "#0.000") + ")";
}

std::string fitText(const Fit& fit)
{
    return "X: " + lineText(fit) + "\r\nNonlinear Error: " + text::format(fit.nonlinearError, "0.000") +
           ", Max Error: " + text::format(fit.maxError, "0.000");
}

} // namespace quorvel::calibration
