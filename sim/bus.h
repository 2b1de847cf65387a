#pragma once

#include "sim/faults.h"
#include "sim/frame_reader.h"
#include "sim/line.h"
#include "sim/noise.h"
#include "sim/readout.h"

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvelsim {

/// A frame that came, and what became of it.
struct LoggedFrame {
    Frame frame;
    std::size_t answerLength =
        0;             ///< characters of all answers to it; 0: nobody answered, or too much is waiting
    std::string fault; ///< kind of the fault that spoiled an answer; empty when none did
};

/// The whole bus without its device: characters in, characters out, in the time that is handed in. All times
/// are seconds since the start of the bus and never go back.
class Bus {
public:
    /// Frames that are kept for takeFrames(); older ones are forgotten.
    static constexpr std::size_t kLoggedFrames = 20000;

    Bus(Pace pace, std::uint64_t seed) : line_(pace), faults_(seed), bitErrors_(seed) {}

    /// Adds a readout, or takes the place of the one with its address.
    void add(Readout readout);

    /// The readout at that address at present; null when there is none.
    Readout* find(int address);

    /// Takes characters that a client wrote.
    void receive(std::string_view characters, double now);

    /// The characters that have to be handed to the client by now.
    std::string due(double now);
    [[nodiscard]] std::optional<double> nextDue() const { return line_.nextDue(); }

    /// When the last character received is whole on the line.
    [[nodiscard]] double receivedUntil() const { return line_.receivedUntil(); }

    /// True once after a fault has pulled the adapter.
    bool takeHangUp() { return line_.takeHangUp(); }

    /// The adapter is out: what is under way is lost.
    void forget();

    Faults& faults() { return faults_; }
    BitErrors& bitErrors() { return bitErrors_; }

    [[nodiscard]] const std::map<int, Readout>& readouts() const { return readouts_; }

    /// The frames since the last call.
    std::deque<LoggedFrame> takeFrames();
    [[nodiscard]] std::size_t droppedCharacters() const { return reader_.dropped(); }

private:
    void carryOut(LoggedFrame& logged);
    void searchFrom(LoggedFrame& logged, int address);
    void reply(LoggedFrame& logged, Readout& readout, std::string_view code, std::string text,
               double earliest);
    void rename(int from, int to);

    Line line_;
    Faults faults_;
    BitErrors bitErrors_;
    FrameReader reader_;
    std::map<int, Readout> readouts_; ///< by address
    std::deque<LoggedFrame> frames_;
};

} // namespace quorvelsim
