#pragma once

#include "grayscale/bellfit.h"

#include <optional>
#include <span>

namespace quorvel::grayscale {

/// A dip with a flat bottom, such as of tape or a leaf.
struct FlatDip {
    Bell bell;          ///< its middle, its width where half of the depth is reached, its depth
    double squares = 0; ///< what it leaves of the samples, squared and added
};

/// Takes the dip in the samples for a flat one: the depth is the mean of its middle half, the edges are straight.
/// @param smooth  the samples, smoothed.
/// @param first   index of the first sample.
/// @param height  how high the smoothed samples are at the most, above 0.
/// @return nothing when they do not fall to half of that on both sides.
std::optional<FlatDip> fitFlat(std::span<const double> samples, std::span<const double> smooth, int first,
                               double height);

} // namespace quorvel::grayscale
