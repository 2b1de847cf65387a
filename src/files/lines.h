#pragma once

#include "files/disk.h"
#include "files/result.h"

#include <filesystem>
#include <string_view>

namespace quorvel::files {

/// Whether the end of the last line of a file is missing, as after a crash. Pipes and devices are not looked at: opening
/// them may wait.
bool isCutOff(const std::filesystem::path& path);

/// A file to which whole lines are appended; several programs may do so at once.
class LineFile {
public:
    /// Opens a file, which is made when it is not there. One that a crash cut off gets the end of its last line first, so
    /// that the next has a line of its own.
    Status open(const std::filesystem::path& path);
    void close() { file_ = OpenFile(); }
    bool isOpen() const { return file_.isOpen(); }
    const std::filesystem::path& path() const { return path_; }
    /// False when the file has been moved away or deleted since it was opened.
    bool isStillThere() const { return file_.stillHas(path_); }
    /// Whether the file had nothing in it when it was opened.
    bool wasEmpty() const { return wasEmpty_; }

    /// Appends lines, the last one with its end, in one call to the system: a program that is killed leaves all or
    /// nothing of them. When the disk is full, what it took is taken back.
    Status append(std::string_view lines);

    /// Returns when everything written is on the disk.
    Status flush();

private:
    std::filesystem::path path_;
    OpenFile file_;
    bool wasEmpty_ = false;
};

} // namespace quorvel::files
