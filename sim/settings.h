#pragma once

#include "sim/readout.h"

#include <string>
#include <string_view>

namespace quorvelsim {

/// Sets something of a readout from "KEY VALUE..." (docs/simulator.md lists the keys).
/// @return the reason in words when there is no such key or the value has another form; empty when it is set.
std::string applySetting(Readout& readout, std::string_view text, double now);

/// The three numbers of a ring.
struct RingShape {
    int capacity = 0;
    int first = 0;
    int next = 0;
};

/// Reads "CAPACITY,FIRST,NEXT"; nothing unless the capacity is 1..9999 and the others are below it.
std::optional<RingShape> ringShape(std::string_view text);

} // namespace quorvelsim
