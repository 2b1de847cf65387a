#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvelsim {

/// Any byte but those that begin or end a frame; the same one for the same keys.
char noiseByte(std::uint64_t seed, std::uint64_t stream, std::uint64_t index);

/// The character with one of its 8 bits turned over; which one follows from the keys.
char withOneBitFlipped(char character, std::uint64_t seed, std::uint64_t stream, std::uint64_t index);

enum class Direction { ToReadouts, FromReadouts };

/// A bad cable: each character that passes has a chance to arrive with one of its 8 bits turned over. Which
/// characters and bits follows from the seed and from how many have passed in that direction, so a
/// conversation can be repeated.
class BitErrors {
public:
    explicit BitErrors(std::uint64_t seed = 1) : seed_(seed) {}

    /// Reads "RATE[,SEED]" and begins to count anew. RATE is the share of the characters that is hit, 0 (a
    /// good cable, as at the start) to 1; without SEED the last one holds.
    /// @return the reason in words when the text is neither, and nothing changes; empty otherwise.
    std::string set(std::string_view text);

    /// A character as it comes out at the other end.
    char pass(char character, Direction direction);

    [[nodiscard]] double rate() const { return rate_; }
    [[nodiscard]] std::uint64_t seed() const { return seed_; }

    struct Count {
        std::uint64_t passed = 0; ///< characters since the last set()
        std::uint64_t hit = 0;    ///< of these, with a wrong bit
    };
    [[nodiscard]] const Count& count(Direction direction) const
    {
        return counts_[static_cast<std::size_t>(direction)];
    }

private:
    double rate_ = 0;
    std::uint64_t seed_;
    std::array<Count, 2> counts_{};
};

} // namespace quorvelsim
