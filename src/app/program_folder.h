#pragma once

#include <filesystem>
#include <string>

namespace quorvel {

/// The program's own folder, where "readme.txt" and the calibration files live: `wanted` when it is not empty,
/// else the executable's folder when it can be written, else a folder of the user's, made when missing and given
/// the help text that stands beside the executable.
std::filesystem::path programFolder(const std::string& wanted);

} // namespace quorvel
