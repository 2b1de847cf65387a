#pragma once

#include <optional>
#include <vector>

namespace quorvel::grayscale {

/// The edges of a shadow, by indices of samples and parts of them.
struct ShadowEdges {
    double left = 0; ///< where half of the darkness is reached
    double right = 0;
    double leftWidth = 0; ///< between 20 % and 80 % of the darkness
    double rightWidth = 0;
    double depth = 0; ///< in the middle: 1 is no light
};

/// The darkest of the stretches in which the light is less than `least` and that are wider than `narrowest` samples, or the
/// widest of those that are as dark; nothing when light is not seen on both sides.
/// @param parts  of the light that arrives, 1 is all of it.
std::optional<ShadowEdges> findShadow(const std::vector<double>& parts, double least, double narrowest);

} // namespace quorvel::grayscale
