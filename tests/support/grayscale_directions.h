#pragma once

namespace quorvel::test {

/// What asks readout 12 of the simulated bus, of three directions, for the grayscale of a sensor, and its pixels.
struct GrayscaleDirection {
    const char* name;
    const char* frame;
    int pixels;
};
inline constexpr GrayscaleDirection kGrayscaleDirections[] = {
    {"X", ":0C65FF", 3760}, {"Y", ":0C66FF", 3760}, {"Z1", ":0C7803FF", 2048}, {"Z2", ":0C7804FF", 2048}};

} // namespace quorvel::test
