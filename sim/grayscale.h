#pragma once

#include "sim/readout.h"

#include <cstdint>
#include <vector>

namespace quorvelsim {

/// The brightness of every pixel of one sensor, 0..255, in pixel order: the lamp's profile, dust on the glass,
/// pixel noise, dark pixels at both ends, the seam of a stitched sensor, and the shadow of the wire where it
/// hangs, as wide as the wire is set to be. Empty when the readout has no such sensor.
std::vector<std::uint8_t> grayscale(const Readout& readout, Sensor which, double now);

} // namespace quorvelsim
