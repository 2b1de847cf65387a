#pragma once

#include "files/result.h"

#include <ctime>
#include <filesystem>
#include <string>

/// Names of files: for people, through symbolic links, and free ones.
namespace quorvel::files {

/// A path, or a part of one, as text for people: UTF-8.
std::string inWords(const std::filesystem::path& path);

/// True when something has this name, even a link that leads nowhere. False also for what cannot be looked at.
bool isThere(const std::filesystem::path& path);

/// The file that a path leads to: the path itself, or the end of its symbolic links. That file need not exist.
/// Fails when the links lead in a circle.
Result<std::filesystem::path> targetOf(const std::filesystem::path& path);

/// Where a file lies until it is whole and gets its name: "t.mdb.part".
std::filesystem::path unfinished(std::filesystem::path path);

/// A name in the folder of `path` that nothing has yet, nor its unfinished() one: for the mark "older"
/// "XDirection.older.mdb", then "XDirection.older-2.mdb" and so on.
std::filesystem::path freeName(const std::filesystem::path& path, const std::string& mark);

/// The mark of a copy kept on a day of local time: "2024-05-17".
std::string dateMark(std::time_t moment);

} // namespace quorvel::files
