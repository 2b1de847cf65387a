#pragma once

#include "autoread/record_reader.h"
#include "jet/result.h"
#include "protocol/ring.h"
#include "protocol/schedule.h"

#include <QDateTime>
#include <QJsonObject>

#include <optional>
#include <string>

namespace quorvel::autoread {

/// A readout's clock beside that of the PC, both local times.
struct ClockReading {
    QDateTime readout;
    QDateTime pc; ///< when the answer had come

    /// Seconds by which the readout's clock is ahead; negative: behind.
    qint64 ahead() const { return pc.secsTo(readout); }
};

/// "2024-05-17 09:05:30, 1 h 2 min behind the PC" and the like.
std::string text(const ClockReading& clock);
/// {readout, pc, aheadSeconds}, times in ISO 8601.
QJsonObject json(const ClockReading& clock);

/// What a readout's ring holds.
struct RingState {
    protocol::RingPointers pointers;
    bool threeDirection = false; ///< as its records are, or, of an empty ring, as it answers the query for Z
    protocol::Record first{};    ///< that at the pointer "first"; nothing in it when the ring is empty
    protocol::Record last{};     ///< the newest, that before the pointer "next"
    std::optional<protocol::AutoMode> mode{}; ///< missing when it was not asked or did not answer
    std::optional<ClockReading> clock{};      ///< likewise

    /// Records that the readout holds; all its slots when its ring has wrapped.
    int held() const { return protocol::spanOf(pointers).count(); }
    const protocol::RecordLayout& layout() const { return protocol::layoutOf(threeDirection); }
};

/// Asks for the pointers until two answers agree: a misread one would mean too few records. An answer that is incomplete or
/// not one is asked for again, as often as `asking` says.
/// @return fails when they do not come, or differ each time, and when nothing can be fetched between these pointers.
jet::Result<protocol::RingPointers> askPointers(link::Module1& module1, const std::string& addressDigits,
                                                const Asking& asking);

/// Asks whether the readout has Z sensors ("2102"): twice when it stays silent, as one without Z does.
bool askHasZ(link::Module1& module1, const std::string& addressDigits);

/// Seconds between two of a readout's own readings; nothing when it takes them at fixed hours or the mode makes no
/// interval.
std::optional<int> intervalSeconds(const std::optional<protocol::AutoMode>& mode);

/// Asks for mode and clock; what is not answered well stays missing.
std::optional<protocol::AutoMode> askMode(link::Module1& module1, const std::string& addressDigits);
std::optional<ClockReading> askClock(link::Module1& module1, const std::string& addressDigits);

/// Asks for the pointers, the first and the last record, mode and clock: six questions at most on a good line, nothing
/// that changes the readout. The reader learns its layout by it.
/// @return fails when pointers or records do not come.
jet::Result<RingState> askRing(RecordReader& reader);

/// {address, capacity, firstSlot, nextSlot, records, type ("C" or "A, B or D"), first {time, xMm, yMm, z1Mm, z2Mm}, last,
/// mode, intervalSeconds, clock}; null for what is missing.
QJsonObject json(const RingState& state, int address);
/// The same as text of several lines, each ended by a line feed.
std::string text(const RingState& state, int address);

} // namespace quorvel::autoread
