#pragma once

#include <cstdint>

/// Writes down, in the order of the calls, what a program does to the files below one folder and what it shows.
///
/// The library goes before the C library: a test links it first, to record what it does itself between startRecorder()
/// and stopRecorder(); a whole program gets it by LD_PRELOAD, with the two paths in these variables.
namespace quorvel::test {

inline constexpr auto kRecordFolder = "QUORVEL_RECORD_FOLDER";
inline constexpr auto kRecordLog = "QUORVEL_RECORD_LOG";

/// What one call did.
enum class Deed : char {
    Made = 'm',          ///< a new file got its first name
    Written = 'w',       ///< bytes, at a place
    Cut = 'c',           ///< to a size, shorter or longer
    Flushed = 'f',       ///< all that was written to the file is on the disk
    FolderFlushed = 'F', ///< so are the names in this folder
    Renamed = 'r',       ///< from one name to another; what had that one loses it
    Linked = 'l',        ///< under a second name
    Removed = 'd',       ///< one name
    Said = 's',          ///< on stdout or stderr, or by say()
};

/// Stands in the log before the texts of a step.
struct StepHead {
    Deed deed = Deed::Said;
    std::uint64_t file = 0;         ///< its number on the disk
    std::int64_t at = 0;            ///< where bytes go, or the size after a cut
    std::uint32_t firstLength = 0;  ///< of a name, of what was said, of the bytes
    std::uint32_t secondLength = 0; ///< of the new name
};

/// @param folder  absolute, without links in it.
void startRecorder(const char* log, const char* folder);
void stopRecorder();

/// Notes that this was shown to somebody.
void say(const char* words);

} // namespace quorvel::test
