#pragma once

#include "sim/readout.h"

#include <string>

namespace quorvelsim {

/// Everything that a readout holds, as one line of JSON (docs/simulator.md lists the members).
std::string stateOf(const Readout& readout, double now);

} // namespace quorvelsim
