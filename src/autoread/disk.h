#pragma once

#include <filesystem>

/// Bringing files through a power cut; one source file per platform.
namespace quorvel::autoread {

/// Returns when everything written to the open file of this handle is on the disk.
/// @return false when the disk refused.
bool flushToDisk(int handle);

/// Makes the names in the folder of `path` last, where the platform needs to be told.
void flushFolderOf(const std::filesystem::path& path);

} // namespace quorvel::autoread
