#pragma once

#include "protocol/record.h"

/// How long a download takes.
namespace quorvel::autoread {

/// Seconds that one record takes at the least: the pauses of its frame, and its reply at 9600 baud.
double leastSecondsPerRecord(const protocol::RecordLayout& layout);

/// Seconds left of a download, by the pace so far; before the first record by the least pace.
/// @param passed  seconds since it began.
double secondsLeft(const protocol::RecordLayout& layout, int total, int received, double passed);

} // namespace quorvel::autoread
