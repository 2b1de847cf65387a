#pragma once

#include <deque>
#include <optional>
#include <string>

namespace quorvelsim {

/// How fast the bus is. All in seconds.
struct Pace {
    double character; ///< one character on the wire
    double answer;    ///< from the end of a frame to the start of its answer
    double gap;       ///< between the answers of two readouts to one broadcast
};

/// 9600 baud, a start bit, 8 data bits and a stop bit; a readout thinks for 4 ms.
inline constexpr Pace kPaced{10.0 / 9600, 0.004, 10.0 / 9600};
inline constexpr Pace kFast{0, 0, 0};

/// The wire in time: when a character that was written is whole, and which characters of the answers are out
/// by now. Knows no device; times are seconds on one clock that never goes back.
class Line {
public:
    explicit Line(Pace pace) : pace_(pace) {}

    [[nodiscard]] const Pace& pace() const { return pace_; }

    /// When a character handed over at `now` is whole: a client that writes a frame in one go is as slow on
    /// the wire as one that takes its time.
    double arrival(double now);

    /// Queues `text` to go out from `earliest` on, or as soon as the line is free then. A text whose time comes
    /// later does not hold it up.
    /// @param hangUpAfter  the adapter is pulled behind the last character.
    /// @return false when it is lost because kQueued characters wait already.
    bool send(std::string text, double earliest, bool hangUpAfter = false);

    /// More than the answers to all frames that a client sends before it reads one.
    static constexpr std::size_t kQueued = 1'048'576;

    /// When the last character that was handed over is whole. A serial port takes no more characters from a client that
    /// is far ahead of its line.
    [[nodiscard]] double receivedUntil() const { return receivedUntil_; }

    /// The characters that are whole by `now` and were not taken yet.
    std::string due(double now);

    /// When the next character is whole; nothing while the line is quiet.
    [[nodiscard]] std::optional<double> nextDue() const;

    /// True once after a hang-up has come due.
    bool takeHangUp();

    /// Forgets what is queued.
    void clear();

private:
    struct Segment {
        std::string text;
        double earliest;
        std::size_t taken;
        bool hangUpAfter;
    };

    /// When the next character of the first segment is whole.
    [[nodiscard]] double nextCharacter(const Segment& segment) const;

    Pace pace_;
    std::deque<Segment> queue_; ///< by `earliest`, but for a first one that has begun
    double receivedUntil_ = -1; ///< when the last character received was whole
    std::size_t queued_ = 0;    ///< characters in the queue
    double freeFrom_ = 0;       ///< when the last segment that is wholly out ended
    bool hungUp_ = false;
};

} // namespace quorvelsim
