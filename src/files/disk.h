#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

/// The calls to the operating system that the standard library lacks; one source file per platform.
namespace quorvel::files {

/// An open file. Dropping it closes it and gives up its lock.
class OpenFile {
public:
    enum class How {
        ToRead,
        ToLock,   ///< an existing file for reading and writing, shared with readers
        New,      ///< for writing; fails when anything has that name
        ToAppend, ///< for writing at its end, whoever else does; made when it is not there
    };

    OpenFile() = default;
    OpenFile(const std::filesystem::path& path, How how, std::error_code& error);
    OpenFile(OpenFile&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}
    OpenFile& operator=(OpenFile&& other) noexcept
    {
        std::swap(handle_, other.handle_);
        return *this;
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile();

    bool isOpen() const { return handle_ != kNone; }

    /// Reads up to `size` bytes. @return their number; 0 at the end of the file and on an error.
    std::size_t read(char* bytes, std::size_t size, std::error_code& error);

    /// Writes all of it, or sets `error`.
    void write(std::string_view bytes, std::error_code& error);

    /// Returns when everything written is on the disk.
    void flush(std::error_code& error);

    /// Keeps other programs from locking the file. @return false when one of them has.
    bool lock();

    /// False when something else has meanwhile been put under the name that was opened.
    bool stillHas(const std::filesystem::path& path) const;

private:
    static constexpr std::intptr_t kNone = -1;

    std::intptr_t handle_ = kNone;
};

/// Returns when everything written to the file of this descriptor is on the disk. @return false when the disk refused.
bool flushToDisk(int descriptor);

/// Flushes the directory entry of `path`, where the platform needs it.
void flushFolderOf(const std::filesystem::path& path);

/// Gives `from` the name `to` in one step; a file of that name is replaced, even while this program has it locked, but
/// where meansStillOpen().
void renameOver(const std::filesystem::path& from, const std::filesystem::path& to, std::error_code& error);

/// True when another program holds locks on the file.
bool lockedByOthers(const std::filesystem::path& path);

/// What the system says of an error, UTF-8, without a full stop behind it.
std::string wordsOf(const std::error_code& error);

/// Whether a failed opening says that the user may only read the file.
bool meansReadOnly(const std::error_code& error);

/// Whether a failed renameOver() can succeed once this program has closed the old file: disks and versions of Windows
/// before 10 that replace no open file.
bool meansStillOpen(const std::error_code& error);

/// Whether a failed opening says that another program has the file open.
bool meansInUse(const std::error_code& error);

} // namespace quorvel::files
