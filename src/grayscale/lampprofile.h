#pragma once

#include <span>
#include <vector>

namespace quorvel::grayscale {

/// Over this length of the sensor the lamp's light counts as smooth: what is narrower than two fifths of it is seen as a dip,
/// what is wider belongs to the lamp unless it is much darker.
inline constexpr double kLampSmoothMm = 5;

/// The light of the lamp alone: the brightness that a sensor would see without wire, dust and noise.
///
/// The medians of blocks of 0.1 mm are smoothed by local parabolas over kLampSmoothMm, in which what lies below the others
/// counts little. Blocks that are darker than 65 % of what is bright around them (the shadow of a wire) count nothing; the
/// profile spans the gap.
/// @param values   brightness of neighbouring pixels, 0 or more.
/// @param pitchMm  from pixel to pixel, more than 0.
/// @return as many levels as there are values, 0 or more.
std::vector<double> lampProfile(std::span<const double> values, double pitchMm);

/// The value in the middle by size; 0 of none. Reorders what it is given.
double medianOf(std::vector<double>& values);

} // namespace quorvel::grayscale
