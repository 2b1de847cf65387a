#include "jet/replaceable.h"

#include "jet/file.h"
#include "jet/text_coding.h"

#include <string>
#include <system_error>

namespace quorvel::jet {

bool openInAccess(std::filesystem::path database, Files& files)
{
    return files.lockedByOthers(database.replace_extension(".ldb"));
}

Status replaceable(const std::filesystem::path& path)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return {};
    if (!std::filesystem::is_regular_file(path, error)) {
        return Failure{textOf(path) + " is not a file and cannot be overwritten. Choose another name."};
    }
    const bool database = sameName(textOf(path.extension()), ".mdb");
    if (diskFiles().lockedByOthers(path) || (database && openInAccess(path, diskFiles()))) {
        return Failure{textOf(path) + " is open in another program. Close it there or choose another name."};
    }
    return {};
}

} // namespace quorvel::jet
