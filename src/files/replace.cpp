#include "files/replace.h"

#include "files/disk.h"
#include "files/name.h"

#include <array>
#include <system_error>

namespace quorvel::files {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 1U << 16U; // bytes
constexpr int kAttempts = 5;
constexpr auto kFreshMark = "new";

Failure cannot(const fs::path& path, const char* what, const std::error_code& error, const char* next)
{
    return {inWords(path) + " " + what + ": " + wordsOf(error) + "." + next};
}

Failure notWritten(const fs::path& path, const std::error_code& error)
{
    return cannot(path, "could not be written", error, " Make room, or choose another folder or name.");
}

Failure inUse(const fs::path& path)
{
    return {inWords(path) + " is open in another program. Close it there or choose another name."};
}

Failure isProtected(const fs::path& path)
{
    return {inWords(path) + " is write-protected. Choose another name, or allow writing first."};
}

/// The superuser may write to every file; one that nobody is meant to write to is protected from him as well.
bool nobodyMayWrite(const fs::path& path)
{
    std::error_code error;
    const auto mayWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    return (fs::status(path, error).permissions() & mayWrite) == fs::perms::none;
}

bool isDatabase(const fs::path& path)
{
    const auto ending = inWords(path.extension());
    return ending.size() == 4 && ending[0] == '.' && (ending[1] | 0x20) == 'm' && (ending[2] | 0x20) == 'd' &&
           (ending[3] | 0x20) == 'b';
}

/// What a chosen path stands for, with other programs kept out of it.
struct Place {
    fs::path chosen;
    fs::path target;
    bool taken = false; ///< there is a file
    OpenFile lock;
};

/// Locks the file at place.target, and looks whether it is still the one of that name: another program may have put a new
/// one there between the opening and the lock.
Status lockTarget(Place& place)
{
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::error_code error;
        place.lock = OpenFile(place.target, OpenFile::How::ToLock, error);
        if (!place.lock.isOpen()) {
            if (meansReadOnly(error)) return isProtected(place.chosen);
            return meansInUse(error) ? inUse(place.chosen) : notWritten(place.chosen, error);
        }
        if (!place.lock.lock()) return inUse(place.chosen);
        if (place.lock.stillHas(place.target)) return {};
    }
    return inUse(place.chosen);
}

Status keepOthersOut(Place& place, bool lockedByUs)
{
    for (const auto& name : {place.chosen, place.target}) {
        if (isDatabase(name) && openInAccess(name, lockedByOthers)) return inUse(place.chosen);
    }
    if (nobodyMayWrite(place.target)) return isProtected(place.chosen);
    return lockedByUs ? Status() : lockTarget(place);
}

Result<Place> placeOf(const fs::path& chosen, bool lockedByUs)
{
    const auto target = targetOf(chosen);
    if (!target) return target.failure();
    Place place{chosen, *target, isThere(*target), {}};
    if (!place.taken) return place;
    std::error_code error;
    if (!fs::is_regular_file(place.target, error)) {
        return Failure{inWords(chosen) + " is not a file and cannot be overwritten. Choose another name."};
    }
    if (auto alone = keepOthersOut(place, lockedByUs); !alone) return alone.failure();
    return place;
}

void removeOurs(const fs::path& path)
{
    std::error_code ignored;
    fs::remove(path, ignored);
}

/// Writes what `source` gives to a new file, of which nothing stays when it fails.
Status copyToNew(OpenFile& source, const fs::path& from, const fs::path& fresh)
{
    std::error_code error;
    OpenFile copy(fresh, OpenFile::How::New, error);
    if (!copy.isOpen()) return notWritten(fresh, error);
    std::array<char, kPiece> piece{};
    std::error_code unread;
    for (auto got = source.read(piece.data(), piece.size(), unread); got > 0 && !error;
         got = source.read(piece.data(), piece.size(), unread)) {
        copy.write({piece.data(), got}, error);
    }
    if (!error && !unread) copy.flush(error);
    if (!error && !unread) return {};
    copy = OpenFile();
    removeOurs(fresh);
    return unread ? cannot(from, "could not be read", unread, "") : notWritten(fresh, error);
}

Status copyFile(const fs::path& from, const fs::path& fresh)
{
    std::error_code error;
    OpenFile source(from, OpenFile::How::ToRead, error);
    return source.isOpen() ? copyToNew(source, from, fresh) : cannot(from, "could not be read", error, "");
}

/// The reason with the chosen name in the place of the temporary one.
Failure about(const fs::path& chosen, const fs::path& fresh, std::string reason)
{
    const auto temporary = inWords(fresh);
    for (auto at = reason.find(temporary); at != std::string::npos; at = reason.find(temporary, at)) {
        reason.replace(at, temporary.size(), inWords(chosen));
        at += inWords(chosen).size();
    }
    return {reason};
}

/// Gives the finished file the permissions of the one that it replaces, and flushes it.
Status finish(const Place& place, const fs::path& fresh)
{
    std::error_code error;
    OpenFile file(fresh, OpenFile::How::ToLock, error);
    if (!error) file.flush(error);
    if (error) return notWritten(place.chosen, error);
    std::error_code ignored;
    if (place.taken) fs::permissions(fresh, fs::status(place.target, ignored).permissions(), ignored);
    return {};
}

/// Gives the new file the name; the old one is let go of before only where it has to be.
std::error_code takeName(Place& place, const fs::path& fresh, const Replacing& how)
{
    std::error_code error;
    renameOver(fresh, place.target, error);
    if (!error || !place.taken || !meansStillOpen(error)) return error;
    place.lock = OpenFile();
    if (how.letGo) how.letGo();
    error.clear();
    renameOver(fresh, place.target, error);
    return error;
}

/// Keeps a copy of the old file and gives the new one its name.
Result<fs::path> exchange(Place& place, const fs::path& fresh, const Replacing& how)
{
    if (auto finished = finish(place, fresh); !finished) return finished.failure();
    fs::path kept;
    if (place.taken && !how.keepAs.empty()) {
        kept = freeName(place.chosen, how.keepAs);
        if (auto copied = copyFile(place.target, kept); !copied)
            return about(place.chosen, kept, copied.error());
        flushFolderOf(kept);
    }
    const auto error = takeName(place, fresh, how);
    if (!error) {
        flushFolderOf(place.target);
        return kept;
    }
    if (!kept.empty()) removeOurs(kept);
    return cannot(place.chosen, place.taken ? "could not be replaced" : "could not be given its name", error,
                  " Choose another name.");
}

} // namespace

Result<fs::path> replaceFile(const fs::path& chosen, const Make& make, const Replacing& how)
{
    auto place = placeOf(chosen, how.lockedByUs);
    if (!place) return place.failure();
    const auto named = freeName(place->target, kFreshMark);
    const auto fresh = how.hidden ? unfinished(named) : named;
    if (auto made = make(fresh); !made) return about(chosen, fresh, made.error());
    auto replaced = exchange(*place, fresh, how);
    if (!replaced) removeOurs(fresh);
    return replaced;
}

Status replaceContent(const fs::path& chosen, std::string_view content, const Replacing& how)
{
    const auto make = [&](const fs::path& fresh) -> Status {
        std::error_code error;
        OpenFile file(fresh, OpenFile::How::New, error);
        if (!file.isOpen()) return notWritten(fresh, error);
        file.write(content, error);
        if (!error) return {};
        file = OpenFile();
        removeOurs(fresh);
        return notWritten(fresh, error);
    };
    const auto replaced = replaceFile(chosen, make, how);
    return replaced ? Status() : Status(replaced.failure());
}

Result<fs::path> replaceByCopy(const fs::path& from, const fs::path& chosen, const Replacing& how)
{
    std::error_code error;
    if (fs::equivalent(from, chosen, error)) return fs::path();
    return replaceFile(
        chosen, [&](const fs::path& fresh) { return copyFile(from, fresh); }, how);
}

Result<fs::path> setAside(const fs::path& path, const std::string& mark)
{
    auto aside = freeName(path, mark);
    std::error_code error;
    fs::rename(path, aside, error);
    if (error) return cannot(path, "could not be renamed", error, "");
    flushFolderOf(aside);
    return aside;
}

Status mayReplace(const fs::path& chosen)
{
    const auto place = placeOf(chosen, false);
    if (!place) return place.failure();
    const auto trial = freeName(place->target, kFreshMark);
    std::error_code error;
    if (!OpenFile(trial, OpenFile::How::New, error).isOpen()) return notWritten(chosen, error);
    removeOurs(trial);
    return {};
}

bool openInAccess(fs::path database, const std::function<bool(const fs::path&)>& locked)
{
    return locked(database.replace_extension(".ldb"));
}

} // namespace quorvel::files
