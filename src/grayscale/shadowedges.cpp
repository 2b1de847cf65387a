#include "grayscale/shadowedges.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace quorvel::grayscale {

namespace {

constexpr int kAcross = 5; // samples of an edge through which a straight line is laid
constexpr double kHalf = 0.5;
constexpr double kBright = 0.8;
constexpr double kDark = 0.2;
constexpr double kAsDark = 0.05;

struct Stretch {
    int first = 0;
    int last = -1;
    int size() const { return last - first + 1; }
};

/// Mean of the middle half.
double floorOf(const std::vector<double>& parts, const Stretch& shadow)
{
    const int quarter = shadow.size() / 4;
    const auto first = parts.begin() + shadow.first + quarter;
    const auto last = parts.begin() + shadow.last + 1 - quarter;
    return std::accumulate(first, last, 0.0) / static_cast<double>(last - first);
}

/// The darkest stretch, or the widest of those that are as dark but for kAsDark.
Stretch darkestBelow(const std::vector<double>& parts, double least, double narrowest)
{
    std::vector<Stretch> found;
    Stretch now;
    for (int i = 0; i <= static_cast<int>(parts.size()); ++i) {
        const bool dark = i < static_cast<int>(parts.size()) && parts[static_cast<std::size_t>(i)] < least;
        if (dark) {
            now.last = i;
            continue;
        }
        if (now.size() > narrowest) found.push_back(now);
        now = {i + 1, i};
    }
    if (found.empty()) return {};
    double darkest = least;
    for (const auto& stretch : found)
        darkest = std::min(darkest, floorOf(parts, stretch));
    Stretch best;
    for (const auto& stretch : found)
        if (floorOf(parts, stretch) <= darkest + kAsDark && stretch.size() > best.size()) best = stretch;
    return best;
}

/// Where the light crosses `level` on the way from `from` in steps of `step`; nothing when it does not.
std::optional<double> crossing(const std::vector<double>& parts, int from, int step, double level)
{
    const auto count = static_cast<int>(parts.size());
    const auto part = [&](int index) {
        return parts[static_cast<std::size_t>(std::clamp(index, 0, count - 1))];
    };
    const auto mean = [&](int index) { return (part(index - 1) + part(index) + part(index + 1)) / 3; };
    int at = from;
    while (at >= 0 && at < count && mean(at) < level)
        at += step;
    if (at < 0 || at >= count) return std::nullopt;
    double x = 0;
    double y = 0;
    double xy = 0;
    double xx = 0;
    for (int i = at - step * (kAcross / 2 + 1), n = 0; n < kAcross; ++n, i += step) {
        const double away = i - at;
        x += away;
        y += part(i);
        xy += away * part(i);
        xx += away * away;
    }
    const double slope = (kAcross * xy - x * y) / (kAcross * xx - x * x);
    if (slope * step <= 0) return at;
    const double offset = (level - (y - slope * x) / kAcross) / slope;
    return at + std::clamp(offset, -static_cast<double>(kAcross), static_cast<double>(kAcross));
}

} // namespace

std::optional<ShadowEdges> findShadow(const std::vector<double>& parts, double least, double narrowest)
{
    const auto shadow = darkestBelow(parts, least, narrowest);
    if (shadow.size() <= narrowest) return std::nullopt;
    const double floor = floorOf(parts, shadow);
    const int middle = (shadow.first + shadow.last) / 2;
    const auto at = [&](int step, double part) {
        return crossing(parts, middle, step, floor + part * (1 - floor));
    };
    const auto left = at(-1, kHalf);
    const auto right = at(1, kHalf);
    const auto leftBright = at(-1, kBright);
    const auto rightBright = at(1, kBright);
    const auto leftDark = at(-1, kDark);
    const auto rightDark = at(1, kDark);
    if (!left || !right || !leftBright || !rightBright || !leftDark || !rightDark) return std::nullopt;
    return ShadowEdges{*left, *right, std::max(*leftDark - *leftBright, 0.0),
                       std::max(*rightBright - *rightDark, 0.0), 1 - floor};
}

} // namespace quorvel::grayscale
