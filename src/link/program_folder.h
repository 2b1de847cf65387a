#pragma once

#include <filesystem>
#include <string>

/// Where our programs keep the user's files. A program that was not installed keeps them beside itself; an
/// installed one never writes into its prefix, whoever runs it.
namespace quorvel::link {

/// The name of the programs in the places that a user's programs share.
inline constexpr auto kProgramName = "quorvel";
/// A file of this name beside the programs says that they were installed.
inline constexpr auto kInstalledMark = "installed";

/// The program's own folder, where the calibration files live: `wanted` when it is not empty, else `own` when it can be
/// written and is not installed, else the user's folder for all our programs, which is made when it is missing.
/// @param own  the folder of the executable.
std::filesystem::path programFolder(const std::string& wanted, const std::filesystem::path& own);

/// The user's folder for all our programs; made when it is missing.
std::filesystem::path usersFolder();

/// The help text: "readme.txt" in that folder; for installed programs without one there, the text they came with.
std::filesystem::path helpText(const std::string& wanted, const std::filesystem::path& own);

/// The folder of the running executable.
std::filesystem::path executableFolder();

} // namespace quorvel::link
