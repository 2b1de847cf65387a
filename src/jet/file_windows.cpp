#include "jet/file.h"

#include "files/disk.h"
#include "files/name.h"
#include "jet/header.h"

#include <string>
#include <system_error>

#include <windows.h>

namespace quorvel::jet {

namespace {

constexpr auto kTryAgainWithSpace = ". Make room or check the disk, then try again.";

std::string systemReason(DWORD code)
{
    return files::wordsOf({static_cast<int>(code), std::system_category()});
}

OVERLAPPED placeOf(std::uint32_t number, std::size_t pageSize)
{
    const std::uint64_t begin = std::uint64_t{number} * pageSize;
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(begin);
    place.OffsetHigh = static_cast<DWORD>(begin >> 32);
    return place;
}

class WindowsFile : public File {
public:
    explicit WindowsFile(HANDLE handle) : handle_(handle) {}
    WindowsFile(const WindowsFile&) = delete;
    WindowsFile& operator=(const WindowsFile&) = delete;
    ~WindowsFile() override { ::CloseHandle(handle_); }

    Result<std::uint64_t> size() override
    {
        LARGE_INTEGER size{};
        if (::GetFileSizeEx(handle_, &size) == 0) {
            return Failure{"could not be examined: " + systemReason(::GetLastError()) + "."};
        }
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    Status readPage(std::uint32_t number, MutableBytes page) override
    {
        auto place = placeOf(number, page.size());
        DWORD got = 0;
        const BOOL done = ::ReadFile(handle_, page.data(), static_cast<DWORD>(page.size()), &got, &place);
        if (done == 0 && ::GetLastError() != ERROR_HANDLE_EOF) {
            return Failure{"could not be read: " + systemReason(::GetLastError()) + ". Check the disk."};
        }
        if (got < page.size()) return Failure{"became shorter while it was read. Copy it again."};
        return {};
    }

    Status writePage(std::uint32_t number, Bytes page) override
    {
        auto place = placeOf(number, page.size());
        DWORD put = 0;
        const BOOL done = ::WriteFile(handle_, page.data(), static_cast<DWORD>(page.size()), &put, &place);
        if (done != 0 && put == page.size()) return {};
        const DWORD code = done != 0 ? ERROR_DISK_FULL : ::GetLastError();
        return Failure{"could not be written: " + systemReason(code) + kTryAgainWithSpace};
    }

    Status sync() override
    {
        if (::FlushFileBuffers(handle_) != 0) return {};
        return Failure{"could not be brought to the disk: " + systemReason(::GetLastError()) +
                       kTryAgainWithSpace};
    }

    Status cut(std::uint64_t size) override
    {
        LARGE_INTEGER end{};
        end.QuadPart = static_cast<LONGLONG>(size);
        if (::SetFilePointerEx(handle_, end, nullptr, FILE_BEGIN) != 0 && ::SetEndOfFile(handle_) != 0)
            return {};
        return Failure{"could not be cut to size: " + systemReason(::GetLastError()) + "."};
    }

private:
    HANDLE handle_;
};

HANDLE openHandle(const std::filesystem::path& path, DWORD access, DWORD share, DWORD disposition)
{
    return ::CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Opens a file that exists, and keeps other writers out. It is shared for deletion, so that a new file can take its
/// place while it is held.
/// @param code  why not, otherwise ERROR_SUCCESS.
HANDLE openToWrite(const std::filesystem::path& path, DWORD& code)
{
    // Network disks may know the attribute and let the file be written all the same.
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        code = ERROR_ACCESS_DENIED;
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle =
        openHandle(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, OPEN_EXISTING);
    code = handle == INVALID_HANDLE_VALUE ? ::GetLastError() : ERROR_SUCCESS;
    return handle;
}

/// A new file, or a left-over without what it held.
Result<std::unique_ptr<File>> emptied(std::unique_ptr<File> file, const std::filesystem::path& path)
{
    if (auto ours = expectLeftOver(*file, path); !ours) return ours.failure();
    if (auto cut = file->cut(0); !cut) return cut.failure();
    return file;
}

class WindowsFiles : public Files {
public:
    Result<Opened> open(const std::filesystem::path& path, bool forWriting) override
    {
        Opened opened;
        HANDLE handle = INVALID_HANDLE_VALUE;
        if (forWriting) {
            DWORD code = ERROR_SUCCESS;
            handle = openToWrite(path, code);
            if (code == ERROR_SHARING_VIOLATION) {
                return Failure{"is used by another program. Close it there and try again."};
            }
            if (code == ERROR_ACCESS_DENIED || code == ERROR_WRITE_PROTECT) {
                opened.readOnlyBecause =
                    "may only be read: " + systemReason(code) + ". Change its permissions or use a copy.";
            }
        }
        if (!forWriting || !opened.readOnlyBecause.empty()) {
            handle = openHandle(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                OPEN_EXISTING);
        }
        if (handle == INVALID_HANDLE_VALUE) {
            return Failure{"could not be opened: " + systemReason(::GetLastError()) + "."};
        }
        opened.file = std::make_unique<WindowsFile>(handle);
        if (::GetFileType(handle) != FILE_TYPE_DISK) return Failure{"is not a file."};
        return opened;
    }

    Result<std::unique_ptr<File>> create(const std::filesystem::path& path) override
    {
        // Shared for deletion, so that the finished file can be renamed while it is held.
        HANDLE handle =
            openHandle(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, OPEN_ALWAYS);
        if (handle != INVALID_HANDLE_VALUE) return emptied(std::make_unique<WindowsFile>(handle), path);
        const DWORD code = ::GetLastError();
        if (code == ERROR_SHARING_VIOLATION) {
            return Failure{"is being created by another program. Wait until it is done."};
        }
        return Failure{"could not be created: " + systemReason(code) + ". Choose another folder."};
    }

    Status publish(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        if (::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0) return {};
        const DWORD code = ::GetLastError();
        if (code == ERROR_ALREADY_EXISTS || code == ERROR_FILE_EXISTS) {
            return Failure{"already exists. Delete it or choose another name."};
        }
        return Failure{"could not be given its name: " + systemReason(code) + "."};
    }

    bool exists(const std::filesystem::path& path) override { return files::isThere(path); }

    void remove(const std::filesystem::path& path) override { ::DeleteFileW(path.c_str()); }

    bool lockedByOthers(const std::filesystem::path& path) override { return files::lockedByOthers(path); }
};

} // namespace

Files& diskFiles()
{
    static WindowsFiles files;
    return files;
}

} // namespace quorvel::jet
