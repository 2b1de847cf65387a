#include "grayscale/lampprofile.h"

#include <algorithm>
#include <cmath>

namespace quorvel::grayscale {

namespace {

constexpr double kBlockMm = 0.1;
constexpr double kAroundMm = 8;       // to both sides: what is bright there
constexpr double kBrightPart = 0.75;  // of the blocks around are darker than what is bright
constexpr double kShadowLevel = 0.65; // of what is bright
constexpr int kBesideShadow = 3;      // blocks that the edge of a shadow may reach
constexpr int kRounds = 6;
constexpr double kTuning = 4; // deviations below the smooth line at which a block counts nothing
constexpr double kLeastDeviation = 0.3;
constexpr double kNormal = 1.4826; // standard deviation of a normal spread, in median deviations

double fractionOf(std::vector<double> values, double part)
{
    const auto at =
        values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

/// A stretch of pixels, by the median of their values.
struct Block {
    double centre; ///< in pixels from the first
    double level;
    double weight = 1; ///< 0: not looked at
};

std::vector<Block> blocksOf(std::span<const double> values, std::size_t size)
{
    std::vector<Block> blocks;
    for (std::size_t first = 0; first < values.size(); first += size) {
        const auto part = values.subspan(first, std::min(size, values.size() - first));
        std::vector<double> sorted(part.begin(), part.end());
        blocks.push_back(
            {static_cast<double>(first) + static_cast<double>(part.size() - 1) / 2, medianOf(sorted)});
    }
    return blocks;
}

/// Takes the weight of the blocks in and beside a shadow.
void leaveOutShadows(std::vector<Block>& blocks, int around)
{
    const auto count = static_cast<int>(blocks.size());
    std::vector<bool> shadow(blocks.size());
    for (int i = 0; i < count; ++i) {
        const auto first = blocks.begin() + std::max(i - around, 0);
        const auto last = blocks.begin() + std::min(i + around + 1, count);
        std::vector<double> levels;
        std::transform(first, last, std::back_inserter(levels),
                       [](const Block& block) { return block.level; });
        const auto at = static_cast<std::size_t>(i);
        shadow[at] = blocks[at].level < kShadowLevel * fractionOf(std::move(levels), kBrightPart);
    }
    for (int i = 0; i < count; ++i) {
        const auto first = shadow.begin() + std::max(i - kBesideShadow, 0);
        const auto last = shadow.begin() + std::min(i + kBesideShadow + 1, count);
        if (std::find(first, last, true) != last) blocks[static_cast<std::size_t>(i)].weight = 0;
    }
}

/// Sums of a parabola that is fitted by weighted least squares.
class Parabola {
public:
    void add(double x, double y, double weight)
    {
        double power = weight;
        for (std::size_t i = 0; i < 5; ++i) {
            powers_[i] += power;
            if (i < 3) products_[i] += power * y;
            power *= x;
        }
    }
    /// Its value at 0; the mean where there is too little for a parabola.
    double atZero() const
    {
        const auto& p = powers_;
        const auto& q = products_;
        const double minor = p[2] * p[4] - p[3] * p[3];
        const double minor1 = p[1] * p[4] - p[2] * p[3];
        const double minor2 = p[1] * p[3] - p[2] * p[2];
        const double whole = p[0] * minor - p[1] * minor1 + p[2] * minor2;
        if (std::fabs(whole) < 1e-12 * p[0] * p[0] * p[0]) return p[0] > 0 ? q[0] / p[0] : 0;
        return (q[0] * minor - p[1] * (q[1] * p[4] - q[2] * p[3]) + p[2] * (q[1] * p[3] - q[2] * p[2])) /
               whole;
    }

private:
    double powers_[5] = {};
    double products_[3] = {};
};

/// The parabola through the `nearest` open blocks beside `place`, there.
double smoothAt(const std::vector<const Block*>& open, double place, std::size_t nearest)
{
    auto right = static_cast<std::size_t>(
        std::lower_bound(open.begin(), open.end(), place,
                         [](const Block* block, double at) { return block->centre < at; }) -
        open.begin());
    auto left = right;
    while (right - left < std::min(nearest, open.size())) {
        const bool toLeft = right == open.size() ||
                            (left > 0 && place - open[left - 1]->centre < open[right]->centre - place);
        toLeft ? --left : ++right;
    }
    const double reach = 1.001 * std::max({place - open[left]->centre, open[right - 1]->centre - place, 1.0});
    Parabola parabola;
    for (auto i = left; i < right; ++i) {
        const double x = (open[i]->centre - place) / reach;
        const double far = std::fabs(x * x * x);
        const double nearness = (1 - far) * (1 - far) * (1 - far);
        parabola.add(x, open[i]->level, nearness * open[i]->weight);
    }
    return parabola.atZero();
}

/// Gives a block the less weight the farther it lies below the smooth line.
void weigh(const std::vector<Block*>& open, const std::vector<double>& smooth)
{
    std::vector<double> deviations;
    for (std::size_t i = 0; i < open.size(); ++i)
        deviations.push_back(std::fabs(open[i]->level - smooth[i]));
    const double scale = kTuning * std::max(kLeastDeviation, kNormal * medianOf(deviations));
    for (std::size_t i = 0; i < open.size(); ++i) {
        const double below = std::clamp((smooth[i] - open[i]->level) / scale, 0.0, 1.0);
        open[i]->weight = std::max((1 - below * below) * (1 - below * below), 1e-6);
    }
}

/// Between the blocks in straight lines.
std::vector<double> spread(const std::vector<Block>& blocks, const std::vector<double>& levels,
                           std::size_t count)
{
    std::vector<double> all(count);
    std::size_t next = 1;
    for (std::size_t i = 0; i < count; ++i) {
        const auto place = static_cast<double>(i);
        while (next + 1 < blocks.size() && blocks[next].centre < place)
            ++next;
        const auto& from = blocks[next - 1];
        const double part = (place - from.centre) / (blocks[next].centre - from.centre);
        all[i] = std::max(levels[next - 1] + part * (levels[next] - levels[next - 1]), 0.0);
    }
    return all;
}

} // namespace

double medianOf(std::vector<double>& values)
{
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::vector<double> lampProfile(std::span<const double> values, double pitchMm)
{
    const auto inBlock = static_cast<std::size_t>(std::max(1L, std::lround(kBlockMm / pitchMm)));
    auto blocks = blocksOf(values, inBlock);
    if (blocks.size() < 2) {
        std::vector<double> all(values.begin(), values.end());
        return std::vector<double>(values.size(), medianOf(all));
    }
    leaveOutShadows(blocks, static_cast<int>(kAroundMm / kBlockMm));
    std::vector<Block*> open;
    for (auto& block : blocks)
        if (block.weight > 0) open.push_back(&block);
    // the brightest block is as bright as what is bright around it
    const std::vector<const Block*> looked(open.begin(), open.end());
    const auto nearest = static_cast<std::size_t>(kLampSmoothMm / kBlockMm);
    for (int round = 0; round < kRounds && !open.empty(); ++round) {
        std::vector<double> smooth;
        smooth.reserve(open.size());
        for (const auto* block : open)
            smooth.push_back(smoothAt(looked, block->centre, nearest));
        weigh(open, smooth);
    }
    std::vector<double> levels;
    levels.reserve(blocks.size());
    for (const auto& block : blocks)
        levels.push_back(open.empty() ? block.level : smoothAt(looked, block.centre, nearest));
    return spread(blocks, levels, values.size());
}

} // namespace quorvel::grayscale
