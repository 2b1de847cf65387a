#include "grayscale/bellfit.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quorvel::grayscale {

namespace {

constexpr double kFourLog2 = 2.772588722239781;
constexpr int kSteps = 30;
constexpr double kNarrowest = 0.7; // indices

using Three = std::array<double, 3>;

double valueOf(const Bell& bell, double index)
{
    const double x = (index - bell.centre) / bell.width;
    return bell.height * std::exp(-kFourLog2 * x * x);
}

/// The solution of three symmetric equations, whose diagonal is raised by `damping` of itself.
Three solved(std::array<Three, 3> rows, Three right, double damping)
{
    for (std::size_t i = 0; i < 3; ++i)
        rows[i][i] *= 1 + damping;
    for (std::size_t i = 0; i < 3; ++i) {
        if (std::fabs(rows[i][i]) < 1e-30) return {};
        for (std::size_t k = i + 1; k < 3; ++k) {
            const double factor = rows[k][i] / rows[i][i];
            for (std::size_t j = i; j < 3; ++j)
                rows[k][j] -= factor * rows[i][j];
            right[k] -= factor * right[i];
        }
    }
    for (std::size_t i = 3; i-- > 0;) {
        for (std::size_t j = i + 1; j < 3; ++j)
            right[i] -= rows[i][j] * right[j];
        right[i] /= rows[i][i];
    }
    return right;
}

/// One step of Gauss and Newton, damped.
Bell stepped(std::span<const double> samples, int first, const Bell& bell, double damping)
{
    std::array<Three, 3> rows{};
    Three right{};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double away = first + static_cast<double>(i) - bell.centre;
        const double value = valueOf(bell, first + static_cast<double>(i));
        const double slope = 2 * kFourLog2 * value * away / (bell.width * bell.width);
        const Three gradient{slope, slope * away / bell.width, value / bell.height};
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column)
                rows[row][column] += gradient[row] * gradient[column];
            right[row] += gradient[row] * (samples[i] - value);
        }
    }
    const auto change = solved(rows, right, damping);
    return {bell.centre + change[0], bell.width + change[1], bell.height + change[2]};
}

} // namespace

double squaresOf(std::span<const double> samples, int first, const Bell& bell)
{
    double sum = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double miss = samples[i] - valueOf(bell, first + static_cast<double>(i));
        sum += miss * miss;
    }
    return sum;
}

Bell fitBell(std::span<const double> samples, int first, const Bell& guess)
{
    const double last = first + static_cast<double>(samples.size()) - 1;
    Bell best = guess;
    best.width = std::max(best.width, kNarrowest);
    double least = squaresOf(samples, first, best);
    double damping = 1e-3;
    for (int step = 0; step < kSteps && best.height > 0; ++step) {
        const auto next = stepped(samples, first, best, damping);
        const bool possible = next.centre >= first && next.centre <= last && next.width >= kNarrowest &&
                              next.width <= 2 * static_cast<double>(samples.size()) && next.height > 0 &&
                              next.height <= 1;
        const double sum = possible ? squaresOf(samples, first, next) : least;
        if (possible && sum < least) {
            best = next;
            least = sum;
            damping /= 10;
        } else {
            damping *= 10;
        }
    }
    return best;
}

} // namespace quorvel::grayscale
