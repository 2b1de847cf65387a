#include "files/disk.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvel::files {

namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

int openDescriptor(const std::filesystem::path& path, int flags)
{
    int descriptor = -1;
    do {
        // O_NONBLOCK: the name of a pipe must not hang the program.
        descriptor = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

int flagsOf(OpenFile::How how)
{
    switch (how) {
    case OpenFile::How::ToRead:
        return O_RDONLY;
    case OpenFile::How::ToLock:
        return O_RDWR;
    case OpenFile::How::ToAppend:
        return O_WRONLY | O_APPEND | O_CREAT;
    default:
        return O_WRONLY | O_CREAT | O_EXCL;
    }
}

/// Programs that share a database over a network lock parts of it, with locks of another kind than flock().
bool hasRecordLocks(int descriptor)
{
    struct flock part {};
    part.l_type = F_WRLCK;
    part.l_whence = SEEK_SET;
    return ::fcntl(descriptor, F_GETLK, &part) == 0 && part.l_type != F_UNLCK;
}

} // namespace

OpenFile::OpenFile(const std::filesystem::path& path, How how, std::error_code& error)
    : handle_(openDescriptor(path, flagsOf(how)))
{
    if (!isOpen()) error = lastError();
}

OpenFile::~OpenFile()
{
    if (isOpen()) ::close(static_cast<int>(handle_));
}

std::size_t OpenFile::read(char* bytes, std::size_t size, std::error_code& error)
{
    ssize_t got = -1;
    do {
        got = ::read(static_cast<int>(handle_), bytes, size);
    } while (got < 0 && errno == EINTR);
    if (got < 0) error = lastError();
    return got < 0 ? 0 : static_cast<std::size_t>(got);
}

void OpenFile::write(std::string_view bytes, std::error_code& error)
{
    while (!bytes.empty()) {
        const auto put = ::write(static_cast<int>(handle_), bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) {
            error = lastError();
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
}

void OpenFile::flush(std::error_code& error)
{
    if (!flushToDisk(static_cast<int>(handle_))) error = lastError();
}

bool OpenFile::lock()
{
    const int descriptor = static_cast<int>(handle_);
    // Any other error: the disk knows no locks, so nobody can hold one.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
    return !hasRecordLocks(descriptor);
}

bool OpenFile::stillHas(const std::filesystem::path& path) const
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(static_cast<int>(handle_), &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

bool flushToDisk(int descriptor) { return ::fsync(descriptor) == 0; }

// A name lasts through a power cut only when the folder itself has been flushed. Not every disk can.
void flushFolderOf(const std::filesystem::path& path)
{
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    const int descriptor = openDescriptor(folder, O_RDONLY | O_DIRECTORY);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

void renameOver(const std::filesystem::path& from, const std::filesystem::path& to, std::error_code& error)
{
    if (::rename(from.c_str(), to.c_str()) != 0) error = lastError();
}

bool lockedByOthers(const std::filesystem::path& path)
{
    std::error_code error;
    OpenFile file(path, OpenFile::How::ToRead, error);
    return file.isOpen() && !file.lock();
}

std::string wordsOf(const std::error_code& error) { return error.message(); }

bool meansReadOnly(const std::error_code& error)
{
    return error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
           error == std::errc::read_only_file_system;
}

bool meansStillOpen(const std::error_code& /*error*/) { return false; }

// Opening asks no locks here: lock() does.
bool meansInUse(const std::error_code& /*error*/) { return false; }

} // namespace quorvel::files
