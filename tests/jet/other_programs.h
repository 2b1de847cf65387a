#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

/// Other programs that read our files.
namespace quorvel::jet::testing {

/// What a program prints. A program that is missing or fails makes the test fail.
inline std::string outputOf(const std::string& command)
{
    std::string output;
    std::FILE* const pipe = ::popen(command.c_str(), "r"); // NOLINT(cert-env33-c)
    std::array<char, 65536> piece{};
    std::size_t got = 0;
    while ((got = std::fread(piece.data(), 1, piece.size(), pipe)) > 0)
        output.append(piece.data(), got);
    EXPECT_EQ(::pclose(pipe), 0) << command << "\n" << output;
    return output;
}

/// The x column as mdb-export prints it.
inline std::vector<double> exported(const std::filesystem::path& path)
{
    std::istringstream lines(outputOf("mdb-export -H '" + path.string() + "' data"));
    std::vector<double> values;
    for (std::string line; std::getline(lines, line);) {
        const auto x = line.substr(line.find(',') + 1);
        values.push_back(std::stod(x));
    }
    return values;
}

} // namespace quorvel::jet::testing
