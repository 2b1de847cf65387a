#include "sim/noise.h"

#include "sim/wire.h"

#include <charconv>
#include <limits>

namespace quorvelsim {

namespace {

/// Each direction draws from two streams of its own: whether a character is hit, and which bit.
constexpr std::uint64_t kFirstStream = 300;

template<typename Number>
bool isWhollyRead(std::string_view text, Number& number)
{
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc{} && result.ptr == end;
}

} // namespace

char noiseByte(std::uint64_t seed, std::uint64_t stream, std::uint64_t index)
{
    const auto byte = static_cast<char>(static_cast<int>(256 * uniform(seed, stream, index)) - 128);
    return byte == ':' || byte == '\r' || byte == '\n' ? '?' : byte;
}

char withOneBitFlipped(char character, std::uint64_t seed, std::uint64_t stream, std::uint64_t index)
{
    const auto bit = static_cast<unsigned>(8 * uniform(seed, stream, index));
    return static_cast<char>(static_cast<unsigned char>(character) ^ (1U << bit));
}

std::string BitErrors::set(std::string_view text)
{
    const auto comma = text.find(',');
    double rate = std::numeric_limits<double>::quiet_NaN();
    auto seed = seed_;
    const bool isRate = isWhollyRead(text.substr(0, comma), rate) && rate >= 0 && rate <= 1;
    if (!isRate || (comma != std::string_view::npos && !isWhollyRead(text.substr(comma + 1), seed)))
        return "\"" + std::string(text) + "\" is not RATE[,SEED] with a rate from 0 to 1, such as 0.0001,7";
    rate_ = rate;
    seed_ = seed;
    counts_ = {};
    return {};
}

char BitErrors::pass(char character, Direction direction)
{
    auto& count = counts_[static_cast<std::size_t>(direction)];
    const auto stream = kFirstStream + 2 * static_cast<std::uint64_t>(direction);
    const auto index = count.passed++;
    if (rate_ <= 0 || uniform(seed_, stream, index) >= rate_) return character;
    ++count.hit;
    return withOneBitFlipped(character, seed_, stream + 1, index);
}

} // namespace quorvelsim
