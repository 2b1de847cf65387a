#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quorvelsim {

/// A command frame as it came over the line, from ":" to the line feed. Times in seconds since the start.
struct Frame {
    std::string text; ///< the whole frame, carriage return and line feed included
    double first = 0; ///< when the ":" was whole
    double last = 0;  ///< when the line feed was whole
};

/// Finds frames in a stream of characters. Whatever stands between frames is dropped; every ":" begins anew,
/// so a broken frame costs only itself. Never holds more than kLongest characters.
class FrameReader {
public:
    /// The longest command has 189 characters; numbers written too long make it somewhat longer.
    static constexpr std::size_t kLongest = 256;

    /// Takes one character that was whole at `seconds`.
    /// @return the frame that it completes, if it does.
    std::optional<Frame> push(char character, double seconds);

    /// How many characters were dropped since the start because they belonged to no frame.
    [[nodiscard]] std::size_t dropped() const { return dropped_; }

private:
    void drop();

    Frame frame_;
    std::size_t dropped_ = 0;
};

} // namespace quorvelsim
