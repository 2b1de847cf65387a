#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace quorvel::ctl {

/// Adds "mdb FILE [TABLE] [--json]" to the commands: without a table it lists the file's tables, with one it prints
/// the table's rows. Data goes to stdout, as CSV with a header row (decimal point, ISO 8601 times, nothing for Null)
/// or as JSON; words go to stderr. Nothing is ever written to the file.
///
/// @param fail  called with the reason when the file or the table cannot be read to its end. Outlives `app`.
void addMdbCommand(CLI::App& app, const std::function<void(const std::string& reason)>& fail);

} // namespace quorvel::ctl
