#pragma once

#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

namespace quorvel::test {

/// A file as it is while another program has it open: locked as long as this lives. Made when it is not there.
class HeldFile {
public:
    explicit HeldFile(const std::filesystem::path& path)
        : handle_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666))
    {
        EXPECT_EQ(::flock(handle_, LOCK_EX | LOCK_NB), 0) << path;
    }
    ~HeldFile() { ::close(handle_); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

private:
    int handle_;
};

} // namespace quorvel::test
