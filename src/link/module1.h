#pragma once

#include "link/bench.h"
#include "link/clock.h"
#include "link/mscomm.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace quorvel::link {

/// The routines of a transaction with a readout: send a frame slowly, wait, receive the reply.
///
/// The order of every command: optionally discardInput(), SendFrame(), then either WaitForInput() and takeInput(),
/// or ReceiveReply() and ReplyText(). transact() is that order in one call.
///
/// When the port vanishes or abandon() was called, waiting for characters ends at once as if the time were over.
class Module1 {
public:
    Module1(MSComm& port, Clock& clock);

    /// Waits 0.03 s, then writes the frame one character at a time with 0.005 s after each, the last included:
    /// a 13-character frame takes 0.095 s or a little more. The frame stays in FrameText().
    /// @param sent  called after each character with the number of those written; for long frames.
    void SendFrame(std::string_view frame, const std::function<void(int)>& sent = {});

    /// Waits until enough characters have arrived; windows repaint meanwhile.
    ///
    /// @param seconds  time allowed, 0 or more.
    /// @param count    characters wanted, up to 32767; 0 or less makes this a plain pause.
    /// @return         true as soon as `count` characters wait; false when the time is over, and always
    ///                 for a pause. Nothing is taken: what arrived stays in the buffer.
    bool WaitForInput(float seconds, int count);

    /// The high-resolution clock in seconds, in single precision, counted from the start of the latest wait so
    /// that the precision does not wear off while the program or the machine is up.
    ///
    /// @return false when the machine has no such counter; `seconds` is left alone then.
    bool PerfSeconds(float& seconds) const;

    /// Receives `count` characters into ReplyText(), allowing 2 s for each.
    /// @return false when one did not arrive in time; ReplyText() holds those that did.
    bool ReceiveReply(std::uint16_t count);

    /// Receives up to and including a line feed into ReplyText(), allowing 2 s for each character.
    /// @return false when a character did not arrive in time, or after kLongestLine characters without line feed.
    bool ReceiveGrayscale();
    /// Far above any reply: the longest legal one, of 65535 pixels, has 131085 characters.
    static constexpr int kLongestLine = 200'000;

    /// Whether characters that wait from before are thrown away before a frame is sent.
    enum class Drain { Yes, No };
    /// One whole transaction: the frame goes out, `replyLength` characters come back into ReplyText().
    bool transact(std::string_view frame, std::uint16_t replyLength, Drain drain = Drain::Yes);

    /// Asks the readout at `address` (1..249) for its readings and returns the line of display text: two blanks,
    /// "X: ", the eight characters, two blanks, "Y: " ... as the windows show it, or " CommError" when the
    /// first reply has not exactly 29 characters. Uses the type and the edition of `bench`; the port must be open.
    std::string ReadSensorValues(int address, const Bench& bench);

    /// Reads the whole input buffer.
    std::string takeInput();
    /// Reads the whole input buffer and throws it away.
    void discardInput() { takeInput(); }

    /// The frame last sent.
    const std::string& FrameText() const { return frameText_; }
    /// The characters received by the last ReceiveReply() or ReceiveGrayscale().
    const std::string& ReplyText() const { return replyText_; }

    /// The program ends: from now on nothing is sent, and no wait waits for characters or time any more. Readouts
    /// ignore a frame that breaks off.
    void abandon() { abandoned_ = true; }

    MSComm& port() { return port_; }
    Clock& clock() { return clock_; }

private:
    bool enoughWaits(int count) const { return count >= 1 && port_.InBufferCount() >= count; }
    /// True when waiting for `count` more characters is in vain.
    bool inVain(int count) const { return abandoned_ || (count >= 1 && !port_.PortOpen()); }
    bool waitByCounter(float seconds, int count);
    bool waitByTimeOfDay(float seconds, int count);
    bool receiveCharacter();

    MSComm& port_;
    Clock& clock_;
    std::int64_t counterOrigin_ = 0;
    bool abandoned_ = false;
    std::string frameText_;
    std::string replyText_;
};

} // namespace quorvel::link
