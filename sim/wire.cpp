#include "sim/wire.h"

#include "sim/civil.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quorvelsim {

namespace {

constexpr double kNoise = 0.003;    // mm
constexpr double kNoiseStep = 0.05; // s during which the noise stands still

std::uint64_t mixed(std::uint64_t value)
{
    value += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

double wave(double seconds, double period, double phase)
{
    return std::sin(2 * std::numbers::pi * (seconds / period + phase));
}

/// Both Z sensors look at the same mark of the wire, one of them mounted a hair lower.
constexpr double mounting(Sensor which) { return which == Sensor::Z2 ? 0.018 : 0; }
constexpr std::uint64_t motionOf(Sensor which)
{
    return which == Sensor::Z2 ? static_cast<std::uint64_t>(Sensor::Z1) : static_cast<std::uint64_t>(which);
}

} // namespace

double uniform(std::uint64_t seed, std::uint64_t stream, std::uint64_t index)
{
    constexpr double kScale = 1.0 / 9007199254740992.0; // 2^-53
    return static_cast<double>(mixed(mixed(mixed(seed) ^ stream) ^ index) >> 11U) * kScale;
}

double bell(std::uint64_t seed, std::uint64_t stream, std::uint64_t index)
{
    double sum = 0;
    for (std::uint64_t part = 0; part < 4; ++part)
        sum += uniform(seed, stream, index * 4 + part);
    return (sum - 2) * std::numbers::sqrt3; // four uniform numbers have a variance of 1/3
}

Wire::Wire(std::uint64_t seed, int address) : seed_(mixed(seed) ^ mixed(static_cast<std::uint64_t>(address)))
{}

double Wire::place(Sensor which, const SensorModel& model, double seconds) const
{
    const auto motion = motionOf(which);
    const auto trait = [&](std::uint64_t index) { return uniform(seed_, 100 + motion, index); };
    const double hanging = model.range * (0.4 + 0.2 * trait(0));
    const double drift = 0.9 * wave(seconds, 365 * kDay, trait(1)) + 0.3 * wave(seconds, 41 * kDay, trait(2));
    const double daily = (0.12 + 0.1 * trait(3)) * wave(seconds, kDay, trait(4));
    const double swing =
        0.02 * (1 + 0.6 * wave(seconds, 170, trait(5))) * wave(seconds, 5.7 + trait(6), trait(7));
    const auto moment = static_cast<std::int64_t>(std::floor(seconds / kNoiseStep));
    const double noise =
        kNoise * bell(seed_, 200 + static_cast<std::uint64_t>(which), static_cast<std::uint64_t>(moment));
    const double place = hanging + drift + daily + swing + noise + mounting(which);
    return std::clamp(place, 1.0, model.range - 1.0);
}

} // namespace quorvelsim
