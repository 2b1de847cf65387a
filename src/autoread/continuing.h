#pragma once

#include "autoread/record_file.h"
#include "autoread/ring_search.h"
#include "autoread/ring_state.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quorvel::autoread {

/// How the records of a readout go on from the last row of a file.
enum class Follow {
    On,           ///< the row is in the ring: what follows is fetched
    UpToDate,     ///< the row is the newest record
    EmptyFile,    ///< the file has no rows: everything is fetched
    Gap,          ///< the ring no longer holds the row, and all its records are later
    Elsewhere,    ///< the ring has another record at that time, or none: the row is of another readout
    NothingLater, ///< likewise, and no record is later than the row: it cannot be continued
};

/// What continuing a file would do. Nothing is written before continueFile().
struct ContinuePlan {
    std::filesystem::path path;
    RecordLayout layout = protocol::kTwoDirections; ///< of the file's columns
    int rows = 0;                                   ///< that the file has
    std::optional<Record> lastRow{};
    std::optional<FileStamp> stamp;
    RingState ring;
    Follow follow = Follow::On;
    protocol::RecordSpan toFetch{};
    bool otherType = false; ///< the file has Z columns and the readout no Z, or the other way round
    bool otherName = false; ///< the file's name is a proposed one, of another readout
    bool tornRow = false;   ///< a half row at the end will be taken off
    double gapSeconds = 0;  ///< Gap: from the last row to the oldest record
    std::string words{};    ///< what was found, for the operator: "27 new records since 2024-03-12 14:00:00."

    /// Continued only after the operator has agreed to `words`.
    bool needsConsent() const
    {
        return follow == Follow::Gap || follow == Follow::Elsewhere || otherType || otherName;
    }
    bool isPossible() const { return follow != Follow::NothingLater; }
};

/// Reads the file's rows and finds the last one in the ring.
///
/// A row is found by time and values. If it is not, or has no readable time, up to three earlier rows are looked for and
/// the last one is expected as many slots behind them: a clock that was set back does not hide it.
/// Where the file began at the oldest record of a ring that has wrapped, its download goes on through all slots, as one
/// that was not broken off; otherwise it ends with the newest record.
///
/// @param reader  as askRing() left it.
/// @return        fails when the file cannot be read or records do not come.
jet::Result<ContinuePlan> planContinuing(RecordReader& reader, const RingState& ring, int address,
                                         const std::filesystem::path& path);

} // namespace quorvel::autoread
