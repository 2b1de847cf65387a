#include "grayscale/flatfit.h"

#include "grayscale/shadowedges.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quorvel::grayscale {

namespace {

constexpr double kOfEdge = 0.6; // from 20 % to 80 %

} // namespace

std::optional<FlatDip> fitFlat(std::span<const double> samples, std::span<const double> smooth, int first,
                               double height)
{
    std::vector<double> parts(smooth.size());
    std::transform(smooth.begin(), smooth.end(), parts.begin(), [](double loss) { return 1 - loss; });
    const auto edges = findShadow(parts, 1 - height / 2, 1);
    if (!edges || edges->depth <= 0 || edges->depth > 1) return std::nullopt;
    FlatDip flat{{first + (edges->left + edges->right) / 2, edges->right - edges->left, edges->depth}, 0};
    if (flat.bell.width < 1) return std::nullopt;
    const double edge = std::max((edges->leftWidth + edges->rightWidth) / 2 / kOfEdge, 1.0);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double inside =
            flat.bell.width / 2 - std::fabs(first + static_cast<double>(i) - flat.bell.centre);
        const double miss = samples[i] - flat.bell.height * std::clamp(0.5 + inside / edge, 0.0, 1.0);
        flat.squares += miss * miss;
    }
    return flat;
}

} // namespace quorvel::grayscale
