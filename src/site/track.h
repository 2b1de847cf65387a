#pragma once

#include "site/sweep.h"

#include <cstdint>
#include <map>

namespace quorvel::site {

/// What is remembered of the readings of a site, in constant memory: the latest of each readout, the one before, the
/// marked zero, and how often each answered.
class Track {
public:
    void take(const Reading& reading);

    /// Takes the latest values of a readout as zero, or those of all; a sensor without a value keeps its zero.
    void markZero(int address);
    void markZero();
    void forgetZero() { zeros_.clear(); }
    bool hasZero(int address) const { return zeros_.count(address) > 0; }

    /// The latest reading, whole or failed; null before the first.
    const Reading* latest(int address) const;

    /// How far a value of the latest reading is from the value before, in mm. The value before is that of the latest
    /// earlier reading that had one, so a failed sweep in between hides no jump. Nothing when either is missing.
    std::optional<double> changeSinceBefore(int address, protocol::Sensor sensor) const;
    /// How far it is from the marked zero.
    std::optional<double> changeSinceZero(int address, protocol::Sensor sensor) const;

    std::int64_t asked(int address) const;
    std::int64_t answered(int address) const; ///< of them whole

private:
    using Values = std::array<std::optional<double>, kSensorCount>;
    struct Past {
        Reading latest;
        Values known;  ///< the last value of each sensor, up to the latest reading
        Values before; ///< the same up to the reading before it
        std::int64_t asked = 0;
        std::int64_t answered = 0;
    };

    const Past* pastOf(int address) const;

    std::map<int, Past> readouts_;
    std::map<int, Values> zeros_;
};

} // namespace quorvel::site
