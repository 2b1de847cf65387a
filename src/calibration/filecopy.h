#pragma once

#include "jet/result.h"

#include <filesystem>
#include <string>

/// Whole files, copied so that a failure at any moment leaves what was there before.
namespace quorvel::calibration {

/// True when something has this name, even a link that leads nowhere. False also for what cannot be looked at.
bool isThere(const std::filesystem::path& path);

/// Copies `from` over `to`: into a temporary file of the same folder first, which then takes the name.
/// A file that another program has open is not replaced.
jet::Status copyWhole(const std::filesystem::path& from, const std::filesystem::path& to);

/// Gives the file a second name in its folder that nothing has yet: for "older", "XDirection.older.mdb" or
/// "XDirection.older-2.mdb" ...
/// @return the new name.
jet::Result<std::filesystem::path> keepAside(const std::filesystem::path& path, const std::string& mark);

/// The path as text for people, UTF-8.
std::string inWords(const std::filesystem::path& path);

} // namespace quorvel::calibration
