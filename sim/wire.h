#pragma once

#include "sim/readout_type.h"

#include <cstdint>

namespace quorvelsim {

/// A number from 0 up to (not including) 1 that depends on its three keys only.
double uniform(std::uint64_t seed, std::uint64_t stream, std::uint64_t index);

/// The same with a bell-shaped spread: mean 0, standard deviation 1, never beyond +-3.5.
double bell(std::uint64_t seed, std::uint64_t stream, std::uint64_t index);

/// The hanging wire before one readout: a slow drift of the structure, the swing of day and night, the
/// pendulum's own motion, and noise. A function of seed, address and time, so a run can be repeated.
class Wire {
public:
    Wire(std::uint64_t seed, int address);

    /// Where the sensor sees the wire, mm, at least 1 mm inside the sensor's range.
    /// @param seconds  time since the start of the bus; negative for what was before.
    [[nodiscard]] double place(Sensor which, const SensorModel& model, double seconds) const;

    [[nodiscard]] std::uint64_t seed() const { return seed_; }

private:
    std::uint64_t seed_;
};

} // namespace quorvelsim
