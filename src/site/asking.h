#pragma once

#include "link/bench.h"

#include <QString>

#include <functional>
#include <optional>

namespace quorvel::link {
class Module1;
}

/// What the window asks a readout besides its readings.
namespace quorvel::site {

/// What a readout's clock told.
struct ClockTold {
    QString words;                 ///< "+3 s", "right" within half a second, or how the exchange ended
    std::optional<double> seconds; ///< readout minus machine, whole; nothing when it told none
};
ClockTold askClock(link::Module1& module1, int address);

/// The type of a readout, as far as it can be told: C when it has Z. Silence is asked for once more.
/// @param otherwise  what a readout without Z is taken for.
link::InstrumentType askType(link::Module1& module1, int address, link::InstrumentType otherwise);

} // namespace quorvel::site
