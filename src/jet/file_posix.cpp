#include "jet/file.h"

#include "files/disk.h"
#include "files/name.h"
#include "jet/header.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quorvel::jet {

namespace {

constexpr int kAttempts = 5;
constexpr auto kTryAgainWithSpace = ". Make room or check the disk, then try again.";

std::string systemReason(int code) { return std::error_code(code, std::generic_category()).message(); }

class PosixFile : public File {
public:
    explicit PosixFile(int handle) : handle_(handle) {}
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;
    ~PosixFile() override { ::close(handle_); }

    Result<std::uint64_t> size() override
    {
        struct stat about {};
        if (::fstat(handle_, &about) != 0)
            return Failure{"could not be examined: " + systemReason(errno) + "."};
        return static_cast<std::uint64_t>(about.st_size);
    }

    Status readPage(std::uint32_t number, MutableBytes page) override
    {
        const auto begin = static_cast<off_t>(number) * static_cast<off_t>(page.size());
        std::size_t done = 0;
        while (done < page.size()) {
            const auto got =
                ::pread(handle_, page.data() + done, page.size() - done, begin + static_cast<off_t>(done));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return Failure{"could not be read: " + systemReason(errno) + ". Check the disk."};
            if (got == 0) return Failure{"became shorter while it was read. Copy it again."};
            done += static_cast<std::size_t>(got);
        }
        return {};
    }

    Status writePage(std::uint32_t number, Bytes page) override
    {
        const auto begin = static_cast<off_t>(number) * static_cast<off_t>(page.size());
        std::size_t done = 0;
        while (done < page.size()) {
            const auto put =
                ::pwrite(handle_, page.data() + done, page.size() - done, begin + static_cast<off_t>(done));
            if (put < 0 && errno == EINTR) continue;
            if (put < 0) {
                const int code = errno;
                dropPiece(begin, page.size());
                return Failure{"could not be written: " + systemReason(code) + kTryAgainWithSpace};
            }
            done += static_cast<std::size_t>(put);
        }
        return {};
    }

    Status sync() override
    {
        if (::fsync(handle_) == 0) return {};
        return Failure{"could not be brought to the disk: " + systemReason(errno) + kTryAgainWithSpace};
    }

    Status cut(std::uint64_t size) override
    {
        if (::ftruncate(handle_, static_cast<off_t>(size)) == 0) return {};
        return Failure{"could not be cut to size: " + systemReason(errno) + "."};
    }

private:
    /// A full disk may have taken a part of the last page: other programs expect whole ones.
    void dropPiece(off_t begin, std::size_t pageSize)
    {
        const auto now = size();
        const auto whole = static_cast<std::uint64_t>(begin);
        if (now && *now > whole && *now < whole + pageSize) static_cast<void>(static_cast<bool>(cut(whole)));
    }

    int handle_;
};

bool isRefusal(int code) { return code == EACCES || code == EPERM || code == EROFS; }

int openHandle(const std::filesystem::path& path, int flags)
{
    int handle = -1;
    do {
        handle = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    } while (handle < 0 && errno == EINTR);
    return handle;
}

constexpr auto kUsedElsewhere = "is used by another program. Close it there and try again.";
constexpr auto kBeingCreated = "is being created by another program. Wait until it is done.";

Status lock(int handle, const char* whenTaken)
{
    if (::flock(handle, LOCK_EX | LOCK_NB) == 0) return {};
    if (errno == EWOULDBLOCK) return Failure{whenTaken};
    return Failure{"could not be locked: " + systemReason(errno) + ". Use a folder on another disk."};
}

/// False when another program has meanwhile put something else under the name that was opened.
/// @param look  ::lstat or, through links, ::stat.
bool stillHasName(int handle, const std::filesystem::path& path, int (*look)(const char*, struct stat*))
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(handle, &opened) == 0 && look(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

Failure notCreated(int code)
{
    return Failure{"could not be created: " + systemReason(code) + ". Choose another folder."};
}

/// Takes what a killed program left under a temporary name away. Only the name goes: it may be the second one of a
/// file that was finished.
Status removeLeftOver(const std::filesystem::path& path)
{
    const int handle = openHandle(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
    if (handle < 0) return errno == ENOENT ? Status{} : Status(notCreated(errno));
    PosixFile file(handle);
    if (auto locked = lock(handle, kBeingCreated); !locked) return locked;
    if (!stillHasName(handle, path, ::lstat)) return Failure{kBeingCreated};
    if (auto ours = expectLeftOver(file, path); !ours) return ours;
    return ::unlink(path.c_str()) == 0 ? Status{} : Status(notCreated(errno));
}

Failure secondNameStays(const std::filesystem::path& name, int code)
{
    return Failure{"is whole, but its temporary name \"" + files::inWords(name.filename()) + "\"" +
                   " stays beside it: " + systemReason(code) + ". Delete that name."};
}

/// Opens a file and, for writing, locks it. @return nothing when it has lost its name meanwhile.
Result<std::optional<Files::Opened>> openOnce(const std::filesystem::path& path, bool forWriting)
{
    // O_NONBLOCK: the name of a pipe must not hang the program.
    int handle = openHandle(path, (forWriting ? O_RDWR : O_RDONLY) | O_NONBLOCK);
    Files::Opened opened;
    if (handle < 0 && forWriting && isRefusal(errno)) {
        opened.readOnlyBecause =
            "may only be read: " + systemReason(errno) + ". Change its permissions or use a copy.";
        handle = openHandle(path, O_RDONLY | O_NONBLOCK);
    }
    if (handle < 0) return Failure{"could not be opened: " + systemReason(errno) + "."};
    opened.file = std::make_unique<PosixFile>(handle);
    struct stat about {};
    if (::fstat(handle, &about) != 0 || !S_ISREG(about.st_mode)) return Failure{"is not a file."};
    if (forWriting && opened.readOnlyBecause.empty()) {
        if (auto locked = lock(handle, kUsedElsewhere); !locked) return locked.failure();
        if (!stillHasName(handle, path, ::stat)) return std::optional<Files::Opened>();
    }
    return std::optional(std::move(opened));
}

class PosixFiles : public Files {
public:
    Result<Opened> open(const std::filesystem::path& path, bool forWriting) override
    {
        // Whoever replaces a file holds its lock until the new one has the name: the file that was opened just before
        // may have lost it.
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            auto opened = openOnce(path, forWriting);
            if (!opened) return opened.failure();
            if (*opened) return std::move(**opened);
        }
        return Failure{kUsedElsewhere};
    }

    Result<std::unique_ptr<File>> create(const std::filesystem::path& path) override
    {
        if (auto removed = removeLeftOver(path); !removed) return removed.failure();
        const int handle = openHandle(path, O_RDWR | O_CREAT | O_EXCL);
        if (handle < 0) return errno == EEXIST ? Failure{kBeingCreated} : notCreated(errno);
        std::unique_ptr<File> file = std::make_unique<PosixFile>(handle);
        if (auto locked = lock(handle, kBeingCreated); !locked) return locked.failure();
        if (!stillHasName(handle, path, ::lstat)) return Failure{kBeingCreated};
        return file;
    }

    Status publish(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        // A second name fails when the name is taken, where a rename would replace it. Disks without second
        // names (FAT, some network shares) get the rename after a look.
        if (::link(from.c_str(), to.c_str()) == 0) {
            if (::unlink(from.c_str()) != 0) return secondNameStays(from, errno);
        } else if (errno == EEXIST || exists(to)) {
            return Failure{"already exists. Delete it or choose another name."};
        } else if (::rename(from.c_str(), to.c_str()) != 0) {
            return Failure{"could not be given its name: " + systemReason(errno) + "."};
        }
        files::flushFolderOf(to);
        return {};
    }

    bool exists(const std::filesystem::path& path) override { return files::isThere(path); }

    void remove(const std::filesystem::path& path) override { ::unlink(path.c_str()); }

    bool lockedByOthers(const std::filesystem::path& path) override { return files::lockedByOthers(path); }
};

} // namespace

Files& diskFiles()
{
    static PosixFiles files;
    return files;
}

} // namespace quorvel::jet
