#include "files/disk_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace {

using quorvel::files::calls;

std::string nameOf(int descriptor)
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error)
        .filename()
        .string();
}

} // namespace

extern "C" int rename(const char* from, const char* to) noexcept
{
    calls.asked.push_back("rename " + std::filesystem::path(to).filename().string());
    if (calls.atRename) calls.atRename();
    if (!calls.renameFails) return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
    errno = EIO;
    return -1;
}

extern "C" int fsync(int descriptor)
{
    struct stat about {};
    const bool folder = ::fstat(descriptor, &about) == 0 && S_ISDIR(about.st_mode);
    calls.asked.push_back("flush " + (folder ? std::string("the folder") : nameOf(descriptor)));
    if (calls.flushError != 0 && !folder) {
        errno = calls.flushError;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" ssize_t write(int descriptor, const void* bytes, size_t size)
{
    if (!calls.atWrite.empty()) {
        const int most = calls.atWrite.front();
        calls.atWrite.pop_front();
        if (most < 0) {
            errno = -most;
            return -1;
        }
        size = std::min(size, static_cast<size_t>(most));
    }
    return ::syscall(SYS_write, descriptor, bytes, size);
}

extern "C" int open(const char* path, int how, ...)
{
    va_list arguments;
    va_start(arguments, how);
    const auto permissions = (how & O_CREAT) != 0 ? va_arg(arguments, mode_t) : mode_t{0};
    va_end(arguments);
    if (calls.openError != 0 && (how & O_ACCMODE) == O_RDWR) {
        errno = calls.openError;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, how, permissions));
}

extern "C" int flock(int descriptor, int how) noexcept
{
    const auto before = std::exchange(calls.atLock, nullptr);
    if (before) before();
    return static_cast<int>(::syscall(SYS_flock, descriptor, how));
}
