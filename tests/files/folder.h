#pragma once

#include "support/fresh_folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace quorvel::files {

/// A folder of the test's own.
class FolderOfFiles : public ::testing::Test {
protected:
    FolderOfFiles() : folder_(test::freshFolder()) {}
    ~FolderOfFiles() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path at(const std::string& name) const { return folder_ / name; }

    std::filesystem::path put(const std::string& name, const std::string& content) const
    {
        std::ofstream(at(name), std::ios::binary) << content;
        return at(name);
    }

    std::string contentOf(const std::string& name) const
    {
        std::ifstream stream(at(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::filesystem::path folder_;
};

} // namespace quorvel::files
