#pragma once

#include <span>

namespace quorvel::grayscale {

/// A bell curve over the indices of samples: height * exp(-4 ln 2 ((i - centre) / width)^2).
struct Bell {
    double centre = 0;
    double width = 0; ///< where half of the height is reached
    double height = 0;
};

/// The bell that fits the samples best, in the sense of least squares, or the guess when none fits better.
/// @param first  index of the first sample.
Bell fitBell(std::span<const double> samples, int first, const Bell& guess);

/// What the bell leaves of the samples, squared and added.
double squaresOf(std::span<const double> samples, int first, const Bell& bell);

} // namespace quorvel::grayscale
