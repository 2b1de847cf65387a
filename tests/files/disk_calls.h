#pragma once

#include "files/folder.h"
#include "files/replace.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace quorvel::files {

/// What the program asks of the system, and what that does (disk_calls.cpp).
struct DiskCalls {
    std::vector<std::string> asked; ///< in its order
    std::function<void()> atRename;
    std::function<void()> atLock;
    /// What the next calls that write do instead: a negative number is an error, another one the most bytes that are taken.
    std::deque<int> atWrite;
    bool renameFails = false;
    int flushError = 0; ///< of a file, not of a folder
    int openError = 0;  ///< of a file to be read and written
};
inline DiskCalls calls;

class ReplacingFiles : public FolderOfFiles {
protected:
    ReplacingFiles() { calls = {}; }
    ~ReplacingFiles() override { calls = {}; }

    /// Tries every way to replace the file; each must give this reason and change nothing.
    void expectRefusal(const std::filesystem::path& chosen, const std::string& reason)
    {
        const auto source = put("source", "new");
        const auto before = names();
        EXPECT_EQ(replaceContent(chosen, "new").error(), reason);
        EXPECT_EQ(replaceByCopy(source, chosen).error(), reason);
        EXPECT_EQ(replaceFile(chosen, [](const auto&) { return Status(); }).error(), reason);
        EXPECT_EQ(mayReplace(chosen).error(), reason);
        EXPECT_EQ(names(), before);
    }
};

} // namespace quorvel::files
