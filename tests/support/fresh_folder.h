#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace quorvel::test {

/// Makes a folder that nobody else uses. Its owner removes it.
inline std::filesystem::path freshFolder()
{
    std::random_device random;
    for (;;) {
        auto folder = std::filesystem::temp_directory_path() / ("quorvel-test-" + std::to_string(random()));
        if (std::filesystem::create_directory(folder)) return folder;
    }
}

} // namespace quorvel::test
