#pragma once

#include <filesystem>
#include <string>

class QDir;

namespace quorvel {

/// The name of the programs in the places that a user's programs share.
inline constexpr auto kProgramName = "quorvel";

/// The program's own folder, where "readme.txt" and the calibration files live: `wanted` when it is not empty,
/// else the executable's folder when it can be written, else usersFolder().
std::filesystem::path programFolder(const std::string& wanted);

/// The folder that all our programs share when they stand where the user may not write. Made when missing, and given
/// the help text of the folder `own` when it has none.
std::filesystem::path usersFolder(const QDir& own);

} // namespace quorvel
