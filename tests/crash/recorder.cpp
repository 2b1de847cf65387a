// The system's calls that change files, each passed on and then noted. Which of them our programs use is checked: what
// is put together from the notes must be what the folder holds (recording.cpp).
#include "crash/recorder.h"

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvel::test {

namespace {

int logFile = -1;
std::string folder; // NOLINT(bugprone-throwing-static-initialization)

/// Keeps errno as the noted call left it.
class Errno {
public:
    Errno() = default;
    Errno(const Errno&) = delete;
    Errno& operator=(const Errno&) = delete;
    ~Errno() { errno = kept_; }

private:
    int kept_ = errno;
};

template<class Function>
Function systems(Function, const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

std::string absolute(const char* path)
{
    if (path[0] == '/') return path;
    char here[PATH_MAX] = "";
    return std::string(::getcwd(here, sizeof here) ? here : "") + '/' + path;
}

bool isRecorded(std::string_view path)
{
    return logFile >= 0 && path.starts_with(folder) &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

std::string pathOf(int descriptor)
{
    char path[PATH_MAX] = "";
    const auto length =
        ::readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    return {path, length > 0 ? static_cast<std::size_t>(length) : 0};
}

struct stat lookAt(int descriptor)
{
    struct stat about {};
    ::fstat(descriptor, &about);
    return about;
}

bool isRecordedFile(int descriptor)
{
    return logFile >= 0 && S_ISREG(lookAt(descriptor).st_mode) && isRecorded(pathOf(descriptor));
}

void note(Deed deed, std::uint64_t file, std::int64_t at, std::string_view first,
          std::string_view second = {})
{
    const StepHead head{deed, file, at, static_cast<std::uint32_t>(first.size()),
                        static_cast<std::uint32_t>(second.size())};
    std::string entry(reinterpret_cast<const char*>(&head), sizeof head);
    entry.append(first).append(second);
    static const auto next = systems(&::write, "write");
    if (next(logFile, entry.data(), entry.size()) != static_cast<ssize_t>(entry.size())) std::abort();
}

bool isThere(const std::string& path)
{
    struct stat about {};
    return ::lstat(path.c_str(), &about) == 0;
}

void noteOpened(int descriptor, const std::string& path, int flags, bool wasThere)
{
    const Errno kept;
    if (descriptor < 0 || (flags & (O_CREAT | O_TRUNC)) == 0) return;
    const auto file = lookAt(descriptor).st_ino;
    if (!wasThere) {
        note(Deed::Made, file, 0, path);
    } else if ((flags & O_TRUNC) != 0) {
        note(Deed::Cut, file, 0, {});
    }
}

int opened(int (*next)(const char*, int, ...), const char* name, int flags, mode_t mode)
{
    const auto path = absolute(name);
    if (!isRecorded(path)) return next(name, flags, mode);
    const bool wasThere = isThere(path);
    const int descriptor = next(name, flags, mode);
    noteOpened(descriptor, path, flags, wasThere);
    return descriptor;
}

ssize_t written(int descriptor, const void* bytes, ssize_t size, std::int64_t at)
{
    const Errno kept;
    if (size > 0)
        note(Deed::Written, lookAt(descriptor).st_ino, at,
             {static_cast<const char*>(bytes), static_cast<std::size_t>(size)});
    return size;
}

int cut(int outcome, int descriptor, std::int64_t size)
{
    const Errno kept;
    if (outcome == 0) note(Deed::Cut, lookAt(descriptor).st_ino, size, {});
    return outcome;
}

int flushed(int outcome, int descriptor)
{
    const Errno kept;
    const auto about = lookAt(descriptor);
    const auto path = pathOf(descriptor);
    if (outcome != 0 || !isRecorded(path)) return outcome;
    if (S_ISREG(about.st_mode)) note(Deed::Flushed, about.st_ino, 0, {});
    if (S_ISDIR(about.st_mode)) note(Deed::FolderFlushed, 0, 0, path);
    return outcome;
}

int named(int outcome, Deed deed, const char* from, const char* to)
{
    const Errno kept;
    const auto name = absolute(from);
    if (outcome == 0 && isRecorded(name)) note(deed, 0, 0, name, to ? absolute(to) : std::string());
    return outcome;
}

void heard(std::FILE* stream, std::string_view words)
{
    const Errno kept;
    if (logFile >= 0 && (stream == stdout || stream == stderr)) note(Deed::Said, 0, 0, words);
}

int printed(std::FILE* stream, const char* format, va_list values)
{
    char words[4096] = "";
    va_list again;
    va_copy(again, values);
    const int length = std::vsnprintf(words, sizeof words, format, again);
    va_end(again);
    heard(stream, {words, std::min(static_cast<std::size_t>(length < 0 ? 0 : length), sizeof words - 1)});
    return std::vfprintf(stream, format, values);
}

/// Begins with the program when LD_PRELOAD has brought this library.
const struct Preloaded {
    Preloaded()
    {
        const char* const log = std::getenv(kRecordLog);
        const char* const place = std::getenv(kRecordFolder);
        if (log && place) startRecorder(log, place);
        ::unsetenv("LD_PRELOAD");
        ::unsetenv(kRecordLog);
    }
} preloaded;

} // namespace

void startRecorder(const char* log, const char* place)
{
    folder = place;
    static const auto next = systems(&::open, "open");
    logFile = next(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

void stopRecorder()
{
    ::close(logFile);
    logFile = -1;
}

void say(const char* words)
{
    if (logFile >= 0) note(Deed::Said, 0, 0, words);
}

} // namespace quorvel::test

using namespace quorvel::test;

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const auto mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    static const auto next = systems(&::open, "open");
    return opened(next, path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const auto mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    static const auto next = systems(&::open64, "open64");
    return opened(next, path, flags, mode);
}

ssize_t write(int descriptor, const void* bytes, size_t size)
{
    static const auto next = systems(&::write, "write");
    if (!isRecordedFile(descriptor)) return next(descriptor, bytes, size);
    const bool atEnd = (::fcntl(descriptor, F_GETFL) & O_APPEND) != 0;
    const auto at = atEnd ? lookAt(descriptor).st_size : ::lseek(descriptor, 0, SEEK_CUR);
    return written(descriptor, bytes, next(descriptor, bytes, size), at);
}

ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t at)
{
    static const auto next = systems(&::pwrite, "pwrite");
    if (!isRecordedFile(descriptor)) return next(descriptor, bytes, size, at);
    return written(descriptor, bytes, next(descriptor, bytes, size, at), at);
}

ssize_t pwrite64(int descriptor, const void* bytes, size_t size, off64_t at)
{
    static const auto next = systems(&::pwrite64, "pwrite64");
    if (!isRecordedFile(descriptor)) return next(descriptor, bytes, size, at);
    return written(descriptor, bytes, next(descriptor, bytes, size, at), at);
}

int ftruncate(int descriptor, off_t size) noexcept
{
    static const auto next = systems(&::ftruncate, "ftruncate");
    if (!isRecordedFile(descriptor)) return next(descriptor, size);
    return cut(next(descriptor, size), descriptor, size);
}

int ftruncate64(int descriptor, off64_t size) noexcept
{
    static const auto next = systems(&::ftruncate64, "ftruncate64");
    if (!isRecordedFile(descriptor)) return next(descriptor, size);
    return cut(next(descriptor, size), descriptor, size);
}

int fsync(int descriptor)
{
    static const auto next = systems(&::fsync, "fsync");
    const int outcome = next(descriptor);
    return logFile < 0 ? outcome : flushed(outcome, descriptor);
}

int fdatasync(int descriptor)
{
    static const auto next = systems(&::fdatasync, "fdatasync");
    const int outcome = next(descriptor);
    return logFile < 0 ? outcome : flushed(outcome, descriptor);
}

int rename(const char* from, const char* to) noexcept
{
    static const auto next = systems(&::rename, "rename");
    return named(next(from, to), Deed::Renamed, from, to);
}

int link(const char* from, const char* to) noexcept
{
    static const auto next = systems(&::link, "link");
    return named(next(from, to), Deed::Linked, from, to);
}

int unlink(const char* path) noexcept
{
    static const auto next = systems(&::unlink, "unlink");
    return named(next(path), Deed::Removed, path, nullptr);
}

int remove(const char* path) noexcept
{
    static const auto next = systems(static_cast<int (*)(const char*) noexcept>(&::remove), "remove");
    return named(next(path), Deed::Removed, path, nullptr);
}

int fprintf(std::FILE* stream, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const int length = printed(stream, format, values);
    va_end(values);
    return length;
}

/// What programs call that were built with checks.
int __fprintf_chk(std::FILE* stream, int /*check*/, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const int length = printed(stream, format, values);
    va_end(values);
    return length;
}

size_t fwrite(const void* bytes, size_t size, size_t count, std::FILE* stream)
{
    static const auto next = systems(&::fwrite, "fwrite");
    heard(stream, {static_cast<const char*>(bytes), size * count});
    return next(bytes, size, count, stream);
}

} // extern "C"
