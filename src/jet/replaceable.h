#pragma once

#include "jet/result.h"

#include <filesystem>

/// What is asked before a file is replaced by a new one: a rename asks nobody, so a program that has the old file open
/// would go on writing into a file without a name.
namespace quorvel::jet {

class Files;

/// True when Access has the database open: it keeps its locks in the ".ldb" beside it.
bool openInAccess(std::filesystem::path database, Files& files);

/// Whether the file at `path`, a database or any other, may be replaced.
///
/// @return fails when it is no file (a folder, a device) and when another program has it open; of a name that ends in
///         ".mdb" the ".ldb" of Access tells so, too. Succeeds when nothing is there.
Status replaceable(const std::filesystem::path& path);

} // namespace quorvel::jet
