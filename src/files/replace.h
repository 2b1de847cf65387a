#pragma once

#include "files/result.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

/// Whole files, replaced so that a failure or a power cut at any moment leaves the old file or the new one.
///
/// The new file grows under a free name in the same folder, is flushed, and takes the name in one step while other
/// programs are kept out. A symbolic link is kept and its target replaced. The new file has the permissions of the old
/// one. Every reason names the path that was chosen.
namespace quorvel::files {

/// Makes the whole new file at the path given, where nothing is yet. Leaves nothing there when it fails.
using Make = std::function<Status(const std::filesystem::path& fresh)>;

struct Replacing {
    std::string keepAs =
        {}; ///< mark of a copy of the old file, kept beside `chosen` (see freeName()); empty: none
    bool lockedByUs = false; ///< the caller has the old file open for writing already
    /// The new file grows under a name with another ending, unfinished(): for folders that another program looks through by
    /// the ending.
    bool hidden = false;
    /// Closes the caller's old file. Called where an open one cannot be replaced, just before the new one takes the name.
    std::function<void()> letGo = nullptr;
};

/// Writes a new file or replaces one.
///
/// @return the copy that was kept, empty when none was asked for or nothing was there. Fails, leaving everything as it
///         was, when mayReplace() would and when `make` or the disk fails.
Result<std::filesystem::path> replaceFile(const std::filesystem::path& chosen, const Make& make,
                                          const Replacing& how = {});

/// As replaceFile(), with this content.
Status replaceContent(const std::filesystem::path& chosen, std::string_view content,
                      const Replacing& how = {});

/// As replaceFile(), with the content of another file. Nothing happens when both are the same file.
Result<std::filesystem::path> replaceByCopy(const std::filesystem::path& from,
                                            const std::filesystem::path& chosen, const Replacing& how = {});

/// Renames what cannot be replaced, a link that leads in a circle, to a free name (see freeName()). @return that name.
Result<std::filesystem::path> setAside(const std::filesystem::path& path, const std::string& mark);

/// Whether a file could now be written under this name. What is there stays as it is.
///
/// @return fails when the name belongs to something else than a file (a folder, a device), when the file is
///         write-protected or open in another program (of a name that ends in ".mdb" the ".ldb" of Access tells so,
///         too), and when its folder is missing or takes no new file.
Status mayReplace(const std::filesystem::path& chosen);

/// True when the ".ldb" beside a database says that Access has it open, as `locked` finds out.
bool openInAccess(std::filesystem::path database,
                  const std::function<bool(const std::filesystem::path&)>& locked);

} // namespace quorvel::files
