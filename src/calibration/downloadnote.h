#pragma once

#include "calibration/recorddata.h"
#include "link/transaction.h"

#include <QString>

#include <optional>

namespace quorvel::calibration {

/// What the record keeps of a table that was sent. @return nothing when nothing was sent.
/// @param zeros  it was a table of zeros.
std::optional<DownloadNote> noteOf(const ReadingColumn& reading, int address, bool zeros,
                                   const link::Exchange& exchange);

/// What became of it, as a sentence.
QString textOf(const DownloadNote& note);

} // namespace quorvel::calibration
