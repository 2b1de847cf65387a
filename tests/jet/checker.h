#pragma once

#include "jet/bytes.h"

#include <string>
#include <vector>

namespace quorvel::jet::testing {

/// Looks through every page of a Jet 4 file that this program wrote, with a reading of its own: each page belongs
/// to exactly one structure or is free; slots, free bytes, row counts, key counts and index entries hold together.
///
/// @return one line per fault; none when the file is sound. Pages that are neither owned nor free are counted in
///         `leaked` when it is given, and are faults otherwise.
std::vector<std::string> faultsOf(Bytes file, int* leaked = nullptr);

/// As above, for a file on the disk.
std::vector<std::string> faultsOfFile(const std::string& path);

} // namespace quorvel::jet::testing
