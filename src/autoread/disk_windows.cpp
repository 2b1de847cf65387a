#include "autoread/disk.h"

#include <io.h>

namespace quorvel::autoread {

bool flushToDisk(int handle) { return ::_commit(handle) == 0; }

// A renamed file's name is in the journal of the disk already.
void flushFolderOf(const std::filesystem::path& /*path*/) {}

} // namespace quorvel::autoread
