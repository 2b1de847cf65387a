#pragma once

#include <csignal>
#include <sys/resource.h>

namespace quorvel::test {

/// As if the disk had only this much room for one file of this process, or of programs that it starts.
class LargestFile {
public:
    explicit LargestFile(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~LargestFile() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    LargestFile(const LargestFile&) = delete;
    LargestFile& operator=(const LargestFile&) = delete;

private:
    rlimit before_{};
};

} // namespace quorvel::test
