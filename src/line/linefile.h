#pragma once

class QFile;

/// Files to which one JSON object a line is appended.
namespace quorvel::line {

/// Opens a file to append lines. One that a crash cut off gets its end first, so that the next has a line of its own.
/// @return false when the file cannot be opened or written; it says why.
bool openForLines(QFile& file);

} // namespace quorvel::line
