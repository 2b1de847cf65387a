#include "grayscale/profilefigures.h"

#include "grayscale/axes.h"
#include "grayscale/bellfit.h"
#include "grayscale/flatfit.h"
#include "grayscale/lampprofile.h"
#include "grayscale/shadowedges.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace quorvel::grayscale {

namespace {

constexpr int kFewestPixels = 200;
constexpr double kNoLight = 15;       // brightness
constexpr double kCoveredPart = 0.25; // of what is bright: below, a pixel at the end of the sensor is covered
constexpr double kCoveredMost = 0.05; // of the sensor, at each end
constexpr int kBesideCovered = 2;     // pixels
constexpr double kNeighbourPart = 0.8; // of the lamp's light: beside a dark pixel it is at least so bright
constexpr double kSmoothDipMm = 0.035;
constexpr double kDipBegins = 0.02;
constexpr double kDipBeginsDeviations = 3;
constexpr double kDipDeviations = 6; // of the noise, that a dip is deep at least
constexpr double kEdges = 3;         // widths of its edge that a shadow reaches beyond them
constexpr double kDeviation = 1.4826;
constexpr double kClearlyBetter = 0.98; // of the squares that another shape leaves

/// Indices of pixels, from 0; the last one is one of them.
struct Range {
    int first = 0;
    int last = -1;
    int size() const { return last - first + 1; }
};

double pitchOf(link::InstrumentType type) { return pixelPosition(type, 2) - pixelPosition(type, 1); }

/// Between the ends of the sensor, without the pixels at its ends that are covered.
Range lookedAt(std::span<const double> values, std::string_view direction, link::InstrumentType type)
{
    const auto ends = endLines(direction, type);
    const auto count = static_cast<int>(values.size());
    const auto place = [type](int index) { return pixelPosition(type, index + 1); };
    Range range{0, count - 1};
    while (range.first < count && place(range.first) < ends.front())
        ++range.first;
    while (range.last >= 0 && place(range.last) > ends.back())
        --range.last;
    if (range.size() < kFewestPixels) return range;
    std::vector<double> sorted(values.begin(), values.end());
    const auto bright = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() * 3 / 4);
    std::nth_element(sorted.begin(), bright, sorted.end());
    const auto covered = [&](int index) {
        return values[static_cast<std::size_t>(index)] < kCoveredPart * *bright;
    };
    const int most = static_cast<int>(kCoveredMost * count);
    int atFirst = 0;
    while (atFirst < most && covered(atFirst))
        ++atFirst;
    int atLast = 0;
    while (atLast < most && covered(count - 1 - atLast))
        ++atLast;
    if (atFirst > 0) range.first = std::max(range.first, atFirst + kBesideCovered);
    if (atLast > 0) range.last = std::min(range.last, count - 1 - atLast - kBesideCovered);
    return range;
}

/// Puts straight lines where pixels are missing. `missing` are indices in ascending order.
void bridge(std::vector<double>& values, const std::vector<int>& missing)
{
    for (std::size_t i = 0; i < missing.size();) {
        auto end = i;
        while (end + 1 < missing.size() && missing[end + 1] == missing[end] + 1)
            ++end;
        const int before = missing[i] - 1;
        const int after = missing[end] + 1;
        const bool hasBefore = before >= 0;
        const bool hasAfter = after < static_cast<int>(values.size());
        const double from = hasBefore  ? values[static_cast<std::size_t>(before)]
                            : hasAfter ? values[static_cast<std::size_t>(after)]
                                       : 0;
        const double to = hasAfter ? values[static_cast<std::size_t>(after)] : from;
        for (; i <= end; ++i) {
            const double part = static_cast<double>(missing[i] - before) / (after - before);
            values[static_cast<std::size_t>(missing[i])] = from + part * (to - from);
        }
    }
}

/// Runs of up to kDarkRun dark pixels between bright ones.
std::vector<int> darkOnes(const std::vector<double>& parts)
{
    std::vector<int> dark;
    const auto count = static_cast<int>(parts.size());
    const auto part = [&parts](int index) { return parts[static_cast<std::size_t>(index)]; };
    for (int i = 1; i + 1 < count; ++i) {
        if (part(i) >= kDarkPart || part(i - 1) < kNeighbourPart) continue;
        int end = i;
        while (end + 1 < count && part(end + 1) < kDarkPart)
            ++end;
        const bool single = end - i < kDarkRun && end + 1 < count && part(end + 1) >= kNeighbourPart;
        for (int pixel = i; single && pixel <= end; ++pixel)
            dark.push_back(pixel);
        i = end;
    }
    return dark;
}

/// Means of `size` neighbours, an odd number; fewer at the ends.
std::vector<double> smoothed(const std::vector<double>& values, int size)
{
    std::vector<double> sums(values.size() + 1);
    std::partial_sum(values.begin(), values.end(), sums.begin() + 1);
    std::vector<double> means(values.size());
    const auto count = static_cast<int>(values.size());
    for (int i = 0; i < count; ++i) {
        const int first = std::max(i - size / 2, 0);
        const int last = std::min(i + size / 2 + 1, count);
        means[static_cast<std::size_t>(i)] =
            (sums[static_cast<std::size_t>(last)] - sums[static_cast<std::size_t>(first)]) / (last - first);
    }
    return means;
}

/// The stretches in which `losses` are more than `least`.
std::vector<Range> stretchesAbove(const std::vector<double>& losses, double least)
{
    std::vector<Range> found;
    for (int i = 0; i < static_cast<int>(losses.size()); ++i) {
        if (losses[static_cast<std::size_t>(i)] <= least) continue;
        if (found.empty() || found.back().last != i - 1) found.push_back({i, i - 1});
        found.back().last = i;
    }
    return found;
}

double noiseOf(const std::vector<double>& losses)
{
    std::vector<double> sizes(losses.size());
    std::transform(losses.begin(), losses.end(), sizes.begin(), [](double loss) { return std::fabs(loss); });
    return kDeviation * medianOf(sizes);
}

double highestIn(const std::vector<double>& values, const Range& range)
{
    return *std::max_element(values.begin() + range.first, values.begin() + range.last + 1);
}

/// Looks for dips in the parts of light that are lost, index by index.
class DipFinder {
public:
    DipFinder(const std::vector<double>& losses, double pitchMm)
        : losses_(losses),
          smooth_(smoothed(losses, 2 * static_cast<int>(std::lround(kSmoothDipMm / pitchMm / 2)) + 1)),
          noise_(noiseOf(smooth_))
    {}

    /// Bells, their places and widths in indices.
    std::vector<Bell> find() const
    {
        std::vector<Bell> found;
        const double least = std::max(kLeastDepth, kDipDeviations * noise_);
        std::vector<Range> deep;
        for (const auto& stretch :
             stretchesAbove(smooth_, std::max(kDipBegins, kDipBeginsDeviations * noise_)))
            if (highestIn(smooth_, stretch) >= least) deep.push_back(stretch);
        for (std::size_t i = 0; i < deep.size(); ++i) {
            const int before = i > 0 ? deep[i - 1].last : -1;
            const int behind = i + 1 < deep.size() ? deep[i + 1].first : static_cast<int>(losses_.size());
            const auto bell = fit(deep[i], before, behind);
            if (bell.height >= kLeastDepth) found.push_back(bell);
        }
        return found;
    }

private:
    /// Between the neighbouring dips, exclusive.
    Bell fit(const Range& stretch, int before, int behind) const
    {
        const auto peak =
            std::max_element(smooth_.begin() + stretch.first, smooth_.begin() + stretch.last + 1);
        Bell guess{static_cast<double>(peak - smooth_.begin()), 0, std::min(*peak, 1.0)};
        guess.width = static_cast<double>(
            std::count_if(smooth_.begin() + stretch.first, smooth_.begin() + stretch.last + 1,
                          [&](double loss) { return loss > guess.height / 2; }));
        const int reach = std::max(4, static_cast<int>(2 * guess.width));
        const int first = std::max({0, before + 1, static_cast<int>(guess.centre) - reach});
        const int last = std::min(
            {static_cast<int>(losses_.size()) - 1, behind - 1, static_cast<int>(guess.centre) + reach});
        const auto from = static_cast<std::size_t>(first);
        const auto samples = std::span(losses_).first(static_cast<std::size_t>(last) + 1).subspan(from);
        const auto bell = fitBell(samples, first, guess);
        const auto smooth = std::span(smooth_).subspan(from, samples.size());
        const auto flat = fitFlat(samples, smooth, first, guess.height);
        const bool isFlat = flat && flat->squares < kClearlyBetter * squaresOf(samples, first, bell);
        return isFlat ? flat->bell : bell;
    }

    const std::vector<double>& losses_;
    std::vector<double> smooth_;
    double noise_;
};

/// All that needs the lamp's light. `values` are those of the range alone.
void lookAtLight(ProfileFigures& figures, std::vector<double> values, std::string_view direction,
                 link::InstrumentType type)
{
    const double pitch = pitchOf(type);
    const auto lamp = lampProfile(values, pitch);
    const auto [least, most] = std::minmax_element(lamp.begin(), lamp.end());
    if (*most < kNoLight) return;
    figures.lamp = {std::accumulate(lamp.begin(), lamp.end(), 0.0) / static_cast<double>(lamp.size()),
                    *least / *most};
    std::vector<double> parts(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        parts[i] = values[i] / std::max(lamp[i], 1.0);
    const auto dark = darkOnes(parts);
    bridge(parts, dark);
    for (const int index : dark)
        figures.dark.push_back(index + figures.firstPixel);

    const auto place = [&](double index) { return pixelPosition(type, figures.firstPixel) + index * pitch; };
    std::vector<double> losses(parts.size());
    std::transform(parts.begin(), parts.end(), losses.begin(), [](double part) { return 1 - part; });
    if (const auto edges = findShadow(parts, kShadowPart, kLeastShadowMm / pitch)) {
        figures.shadow = {place((edges->left + edges->right) / 2), (edges->right - edges->left) * pitch,
                          edges->leftWidth * pitch, edges->rightWidth * pitch, edges->depth};
        const int first = std::max(0, static_cast<int>(edges->left - kEdges * edges->leftWidth) - 2);
        const int last = std::min(static_cast<int>(losses.size()) - 1,
                                  static_cast<int>(edges->right + kEdges * edges->rightWidth) + 2);
        std::fill(losses.begin() + first, losses.begin() + last + 1, 0.0);
    }
    const auto ends = endLines(direction, type);
    for (const auto& bell : DipFinder(losses, pitch).find()) {
        const double at = place(bell.centre);
        const bool seam = ends.size() > 2 && std::fabs(at - ends[1]) < kSeamReachMm;
        figures.dips.push_back({at, bell.width * pitch, bell.height, seam});
    }
}

} // namespace

ProfileFigures profileFigures(std::span<const double> values, std::span<const int> damaged,
                              std::string_view direction, link::InstrumentType type)
{
    ProfileFigures figures;
    std::vector<double> all(values.begin(), values.end());
    std::copy_if(damaged.begin(), damaged.end(), std::back_inserter(figures.damaged),
                 [&](int pixel) { return pixel >= 1 && pixel <= static_cast<int>(all.size()); });
    std::sort(figures.damaged.begin(), figures.damaged.end());
    std::vector<int> missing(figures.damaged);
    for (auto& pixel : missing)
        --pixel;
    bridge(all, missing);
    const auto range = lookedAt(all, direction, type);
    figures.firstPixel = range.first + 1;
    figures.lastPixel = range.last + 1;
    if (range.size() <= 0) return figures;

    const std::vector<double> seen(all.begin() + range.first, all.begin() + range.last + 1);
    const auto [least, most] = std::minmax_element(seen.begin(), seen.end());
    figures.lowest = {figures.firstPixel + static_cast<int>(least - seen.begin()), *least};
    figures.highest = {figures.firstPixel + static_cast<int>(most - seen.begin()), *most};
    figures.mean = std::accumulate(seen.begin(), seen.end(), 0.0) / static_cast<double>(seen.size());
    for (int pixel = figures.firstPixel; pixel <= figures.lastPixel; ++pixel)
        if (all[static_cast<std::size_t>(pixel - 1)] >= kSaturated) figures.saturated.push_back(pixel);
    if (range.size() >= kFewestPixels) lookAtLight(figures, seen, direction, type);
    return figures;
}

} // namespace quorvel::grayscale
