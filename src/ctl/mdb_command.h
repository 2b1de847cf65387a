#pragma once

#include <CLI/CLI.hpp>

namespace quorvel::ctl {

/// Adds "mdb FILE [TABLE] [--json]" to the commands: without a table it lists the file's tables, with one it prints
/// the table's rows. Data goes to stdout, as CSV with a header row (decimal point, ISO 8601 times, nothing for Null)
/// or as JSON; words go to stderr. Nothing is ever written to the file.
///
/// @param exitStatus  set to 1 when the file or the table cannot be read to its end; left alone otherwise.
///                    Outlives `app`.
void addMdbCommand(CLI::App& app, int& exitStatus);

} // namespace quorvel::ctl
