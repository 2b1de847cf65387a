#include "autoread/disk.h"

#include <fcntl.h>
#include <unistd.h>

namespace quorvel::autoread {

bool flushToDisk(int handle) { return ::fsync(handle) == 0; }

void flushFolderOf(const std::filesystem::path& path)
{
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    ::fsync(handle);
    ::close(handle);
}

} // namespace quorvel::autoread
