#include "files/disk.h"

#include "files/name.h"

#include <algorithm>
#include <array>
#include <io.h>
#include <optional>
#include <vector>

#include <windows.h>

namespace quorvel::files {

namespace {

constexpr DWORD kReaders = FILE_SHARE_READ | FILE_SHARE_DELETE;
constexpr DWORD kEverybody = kReaders | FILE_SHARE_WRITE;

// Of winbase.h since Windows 10: a rename takes effect although the old file is still open.
constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD kReplaceIfExists = 0x1;
constexpr DWORD kPosixSemantics = 0x2;

std::error_code lastError() { return {static_cast<int>(::GetLastError()), std::system_category()}; }

HANDLE handleOf(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

HANDLE openHandle(const std::filesystem::path& path, OpenFile::How how)
{
    if (how == OpenFile::How::ToAppend)
        return ::CreateFileW(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE, kEverybody, nullptr, OPEN_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool reading = how == OpenFile::How::ToRead;
    const bool fresh = how == OpenFile::How::New;
    // What cannot be deleted while another program has it open cannot be replaced either.
    const DWORD replacing = how == OpenFile::How::ToLock ? DELETE : 0;
    return ::CreateFileW(path.c_str(), reading ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE | replacing,
                         reading ? kEverybody : kReaders, nullptr, fresh ? CREATE_NEW : OPEN_EXISTING,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// What a file is on its disk, whatever its name.
std::optional<BY_HANDLE_FILE_INFORMATION> identityOf(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION about{};
    return ::GetFileInformationByHandle(file, &about) != 0 ? std::optional(about) : std::nullopt;
}

bool renameWhileOpen(const std::filesystem::path& from, const std::filesystem::path& to)
{
    const HANDLE file = ::CreateFileW(from.c_str(), DELETE | SYNCHRONIZE, kEverybody, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const auto name = std::filesystem::absolute(to).native();
    const std::size_t bytes = name.size() * sizeof(wchar_t);
    std::vector<unsigned char> room(sizeof(FILE_RENAME_INFO) + bytes);
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(room.data());
    // The flags take the place of the older ReplaceIfExists.
    *reinterpret_cast<DWORD*>(info) = kReplaceIfExists | kPosixSemantics;
    info->FileNameLength = static_cast<DWORD>(bytes);
    std::copy(name.begin(), name.end(), info->FileName);
    const BOOL done =
        ::SetFileInformationByHandle(file, kRenameInfoEx, info, static_cast<DWORD>(room.size()));
    ::CloseHandle(file);
    return done != 0;
}

} // namespace

OpenFile::OpenFile(const std::filesystem::path& path, How how, std::error_code& error)
    : handle_(reinterpret_cast<std::intptr_t>(openHandle(path, how)))
{
    if (!isOpen()) error = lastError();
}

OpenFile::~OpenFile()
{
    if (isOpen()) ::CloseHandle(handleOf(handle_));
}

std::size_t OpenFile::read(char* bytes, std::size_t size, std::error_code& error)
{
    DWORD got = 0;
    if (::ReadFile(handleOf(handle_), bytes, static_cast<DWORD>(size), &got, nullptr) == 0)
        error = lastError();
    return got;
}

void OpenFile::write(std::string_view bytes, std::error_code& error)
{
    constexpr std::size_t kPiece = 1U << 20U;
    while (!bytes.empty()) {
        DWORD put = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), kPiece));
        if (::WriteFile(handleOf(handle_), bytes.data(), size, &put, nullptr) == 0 || put == 0) {
            error = lastError();
            return;
        }
        bytes.remove_prefix(put);
    }
}

void OpenFile::flush(std::error_code& error)
{
    if (::FlushFileBuffers(handleOf(handle_)) == 0) error = lastError();
}

// Opening it has kept other writers out.
bool OpenFile::lock() { return isOpen(); }

bool OpenFile::stillHas(const std::filesystem::path& path) const
{
    const HANDLE file = ::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kEverybody, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const auto named = identityOf(file);
    const auto opened = identityOf(handleOf(handle_));
    ::CloseHandle(file);
    return named && opened && named->dwVolumeSerialNumber == opened->dwVolumeSerialNumber &&
           named->nFileIndexHigh == opened->nFileIndexHigh && named->nFileIndexLow == opened->nFileIndexLow;
}

bool flushToDisk(int descriptor) { return descriptor >= 0 && ::_commit(descriptor) == 0; }

// The journal of the disk has the name.
void flushFolderOf(const std::filesystem::path& /*path*/) {}

void renameOver(const std::filesystem::path& from, const std::filesystem::path& to, std::error_code& error)
{
    if (renameWhileOpen(from, to)) return;
    if (::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        error = lastError();
    }
}

bool lockedByOthers(const std::filesystem::path& path)
{
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return ::GetLastError() == ERROR_SHARING_VIOLATION;
    ::CloseHandle(file);
    return false;
}

std::string wordsOf(const std::error_code& error)
{
    if (error.category() != std::system_category()) return error.message();
    std::array<wchar_t, 1024> words{};
    DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                    static_cast<DWORD>(error.value()), 0, words.data(),
                                    static_cast<DWORD>(words.size()), nullptr);
    while (length > 0 &&
           std::wstring_view(L" .\r\n\u3002").find(words.at(length - 1)) != std::wstring_view::npos)
        --length;
    if (length == 0) return "error " + std::to_string(error.value());
    return inWords(std::wstring(words.data(), length));
}

bool meansReadOnly(const std::error_code& error)
{
    return error.value() == ERROR_ACCESS_DENIED || error.value() == ERROR_WRITE_PROTECT;
}

bool meansStillOpen(const std::error_code& error)
{
    return error.value() == ERROR_ACCESS_DENIED || error.value() == ERROR_SHARING_VIOLATION;
}

bool meansInUse(const std::error_code& error) { return error.value() == ERROR_SHARING_VIOLATION; }

} // namespace quorvel::files
