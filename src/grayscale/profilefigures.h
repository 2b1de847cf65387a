#pragma once

#include "link/bench.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// What the pixels of a sensor say about lamp, glass and wire, in figures. Places are those of the chart (axes.h), depths
/// and evenness parts of 1. docs/grayscale.md states each threshold and each error; a test reads the errors there.
namespace quorvel::grayscale {

inline constexpr double kSaturated = 254;   ///< from this brightness on a pixel has no room above
inline constexpr double kDarkPart = 0.3;    ///< of the lamp's light: below, a pixel is dark
inline constexpr int kDarkRun = 3;          ///< more dark pixels side by side are a dip
inline constexpr double kLeastDepth = 0.05; ///< of a dip
inline constexpr double kShadowPart = 0.5;  ///< of the lamp's light: below, a wide dip is a shadow
inline constexpr double kLeastShadowMm = 0.3;
inline constexpr double kDirtMm = 0.3;      ///< a dip that is wider is dirt, not dust
inline constexpr double kSeamReachMm = 1.5; ///< of the middle of a stitched sensor

/// A value and the number of its pixel, from 1.
struct PixelValue {
    int pixel = 0;
    double value = 0;
};

/// A place where the glass takes light: the bell, or the flat bottom with straight edges, that fits the pixels best.
struct Dip {
    double placeMm = 0;
    double widthMm = 0; ///< where half of the depth is reached
    double depth = 0;   ///< at its middle, of the lamp's light: kLeastDepth to 1
    bool seam = false;  ///< where the two halves of a stitched sensor meet
};

/// The shadow of the wire, between the places where half of its darkness is reached.
struct Shadow {
    double centreMm = 0;
    double widthMm = 0;
    double leftEdgeMm = 0; ///< over which the light goes from 80 % of the darkness to 20 %
    double rightEdgeMm = 0;
    double depth = 0; ///< of its middle, of the lamp's light
};

/// The lamp, as it would look without wire and dust.
struct Lamp {
    double level = 0;    ///< mean brightness
    double evenness = 0; ///< its darkest part by its brightest
};

struct ProfileFigures {
    int firstPixel =
        0; ///< what was looked at: from the one end of the sensor to the other, without covered pixels
    int lastPixel = 0; ///< below firstPixel: nothing
    PixelValue lowest;
    PixelValue highest;
    double mean = 0;
    std::vector<int> dark;      ///< single pixels, or up to kDarkRun side by side
    std::vector<int> saturated; //
    std::vector<int> damaged;   ///< as given
    std::optional<Lamp> lamp;   ///< nothing when there are too few pixels, or no light
    std::vector<Dip> dips;      ///< by place
    std::optional<Shadow> shadow;
};

/// @param values   brightness of the pixels 1 to N, 0 to 255; means of several readings have parts.
/// @param damaged  numbers of pixels whose value did not arrive well; numbers beyond the pixels are let go.
ProfileFigures profileFigures(std::span<const double> values, std::span<const int> damaged,
                              std::string_view direction, link::InstrumentType type);

} // namespace quorvel::grayscale
