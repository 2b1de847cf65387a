#pragma once

#include "link/bench.h"
#include "link/transaction.h"
#include "protocol/offset.h"

#include <functional>
#include <string>
#include <string_view>

namespace quorvel::link {
class Module1;
}

/// The references, and the two runs of commands behind them: a readout is made to report a chosen value for the place
/// that the wire has now, by writing the offset that leads there.
namespace quorvel::protocol {

/// What a direction of the reference window has of its own, besides its row of kOffsets.
struct ReferenceRow {
    const OffsetRow& offset;
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

/// What became of the offset that the readout had before the run.
enum class FormerOffset {
    Untouched, ///< nothing was written, or the run was a query
    MayBeLost, ///< the zero went out, but the readout did not answer completely
    Lost,      ///< the readout answered the zero
};

/// How a run went, as far as it got.
struct ReferenceRun {
    bool complete = false;  ///< every reply was complete
    bool confirmed = false; ///< the readout repeated the new offset
    FormerOffset formerOffset = FormerOffset::Untouched;
    std::string offset;          ///< eight characters: written by a set, received by a query
    std::string reading;         ///< the current reading as received
    bool offsetIsAnswer = false; ///< of a query: the offset came in an answer to its question
    double realValue = 0; ///< of a query: the reading without the offset, to five decimals as both have
    link::Exchange last;  ///< the latest exchange whose reply the run looked at
};

/// Makes the readout of `bench` report `reference`: its offset is set to zero, its reading awaited and the
/// difference written as its offset. Of a reading that is not a number the leading number counts, 0 without one. A run
/// that fails after its first command leaves the offset at zero.
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

/// The warning about the former offset when the new one was not confirmed; empty when there is none.
std::string lossText(const ReferenceRun& run);
/// The warning about a reading that was not a number; empty when it was one, or there was none yet.
std::string countedText(const ReferenceRun& run);

/// The second line that a query shows, in general number format.
std::string realValueText(const ReferenceRow& row, double realValue);

} // namespace quorvel::protocol
