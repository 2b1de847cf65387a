#pragma once

#include "link/bench.h"
#include "settings/offset.h"

#include <functional>
#include <string>
#include <string_view>

namespace quorvel::link {
class Module1;
}

/// The talk of the references, and its two runs: a readout is made to report a chosen value for the place
/// that the wire has now, by writing the offset that leads there.
namespace quorvel::settings {

/// What a direction of the reference window has of its own, besides its row of kDirections.
struct ReferenceRow {
    const Direction& direction;
    bool setDrains;      ///< before each of the two set commands
    bool queryDrains;    ///< before the query of the offset
    int readingPosition; ///< of the reading in the line of ReadSensorValues(); 0: a reply of its own ("2102")
    float pauseBeforeSet;      ///< s, between reading and writing
    int echoLength;            ///< compared after the writing
    std::string_view realText; ///< what a query shows before the value without offset
};

/// Z is compared up to the third character of its value only.
inline constexpr ReferenceRow kReferences[] = {
    {kX, false, true, 6, 0, 13, "The current value without reference is "},
    {kY, false, false, 19, 0, 13, "The real value without corrention is "},
    {kZ, true, true, 0, 1, 10, "The real value without corrention is "},
};

inline constexpr float kSettlingTime = 2; ///< s, in which the readout measures without offset

inline constexpr auto kOffsetLost = "The former offset was overwritten with zero and is lost.";
inline constexpr auto kCountedAsZero = "The readout gave no reading; it was counted as 0.";

/// How a run went, as far as it got.
struct ReferenceRun {
    bool complete = false;  ///< every reply arrived whole
    bool confirmed = false; ///< the readout repeated the new offset
    bool zeroed = false;    ///< the old offset is gone
    std::string offset;     ///< eight characters: written by a set, received by a query
    std::string reading;    ///< the current reading as received
    double realValue = 0;   ///< of a query: the reading without the offset, to five decimals as both have
    Exchange last;          ///< the command sent last
};

/// Makes the readout of `bench` report `reference`: its offset is set to zero, its reading awaited and the
/// difference written as its offset. A reading that is no number counts as 0. Fails with the old offset lost.
///
/// @param settling  called when the wait begins.
ReferenceRun setReference(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row,
                          double reference, const std::function<void()>& settling);

/// Asks for the offset of the readout of `bench`, then for its reading.
/// @param received  called with the offset as soon as that has arrived.
ReferenceRun queryReference(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row,
                            const std::function<void(const std::string& offset)>& received);

/// What a confirmed set shows.
std::string referenceSetText(const ReferenceRun& run);

/// The second line that a query shows, in general number format.
std::string realValueText(const ReferenceRow& row, double realValue);

} // namespace quorvel::settings
