#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// What the fuzzers have in common: taking an input apart, and saying what went wrong with it.
namespace quorvel::test {

/// The bytes that a fuzzer was given, taken from the front. Past the end everything is 0.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    bool empty() const { return left_ == 0; }

    std::uint8_t byte()
    {
        if (left_ == 0) return 0;
        --left_;
        return *data_++;
    }

    /// 0 to `count` - 1.
    std::size_t below(std::size_t count)
    {
        const auto number =
            count > 256 ? std::size_t{byte()} | std::size_t{byte()} << 8 : std::size_t{byte()};
        return number % count;
    }

    std::string text(std::size_t length)
    {
        std::string taken;
        for (; length > 0 && left_ > 0; --length)
            taken += static_cast<char>(byte());
        return taken;
    }
    std::string rest() { return text(left_); }

    /// Up to and without the next line feed.
    std::string line()
    {
        std::string taken;
        while (left_ > 0) {
            const auto character = static_cast<char>(byte());
            if (character == '\n') break;
            taken += character;
        }
        return taken;
    }

private:
    const std::uint8_t* data_;
    std::size_t left_;
};

/// A promise that was not kept ends the fuzzer, with the promise on stderr.
inline void promised(bool kept, std::string_view promise)
{
    if (kept) return;
    std::fprintf(stderr, "Not kept: %.*s\n", static_cast<int>(promise.size()), promise.data());
    std::abort();
}

} // namespace quorvel::test
