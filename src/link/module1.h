#pragma once

#include "link/clock.h"
#include "link/mscomm.h"
#include "link/transaction.h"

#include <QMetaObject>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::link {

/// The one door to the bus: everything that is sent goes through transact(), and whoever observes the exchanges sees
/// all of them. The other routines are the steps of a transaction; besides transact() only pauses are asked for from
/// outside.
///
/// When the port vanishes or abandon() was called, waiting for characters ends at once as if the time were over.
class Module1 {
public:
    Module1(MSComm& port, Clock& clock);
    ~Module1();
    Module1(const Module1&) = delete;
    Module1& operator=(const Module1&) = delete;

    /// Runs a transaction to its end: throws away what waits (if it drains), sends the frame, and receives the reply by
    /// its rule.
    ///
    /// After a whole reply that is not the answer, the rest of what came is still to be thrown away: that is done
    /// before the next frame that does not drain by itself, or by dropRest().
    /// @param sent  called after each character sent with the number of those written; for long frames.
    Exchange transact(const Transaction& transaction, const std::function<void(int)>& sent = {});

    /// Throws away what a reply that is not the answer left behind, kRestTime allowed for it; does nothing otherwise.
    /// For the end of a handler, when its boxes are closed.
    void dropRest();
    /// Pauses, then throws away what has come. For the end of a reading.
    void settle(float seconds);

    /// Whether frames that change a readout are refused before a character is sent; off at first.
    void setReadOnly(bool on) { readOnly_ = on; }
    bool readOnly() const { return readOnly_; }

    /// Reports every exchange from now on to an observer, which must be removed before it is destroyed.
    void addObserver(ExchangeObserver& observer) { observers_.push_back(&observer); }
    void removeObserver(ExchangeObserver& observer);

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

    /// The frame last sent.
    const std::string& FrameText() const { return frameText_; }
    /// The characters received by the last ReceiveReply() or ReceiveGrayscale(), as far as they have come.
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
    /// Takes the whole input buffer.
    std::string takeInput();
    void discardInput() { takeInput(); }
    void run(Exchange& exchange, const std::function<void(int)>& sent);
    void prepareInput(Exchange& exchange);
    void send(Exchange& exchange, const std::function<void(int)>& sent);
    /// @return true when as much came as the rule asks for.
    bool receive(const ReplyRule& rule, std::string& reply);
    void noteArrival();
    double monotonicSeconds() const;
    /// Seconds since the running exchange began.
    double sinceBegin() const;
    bool waitByCounter(float seconds, int count);
    bool waitByTimeOfDay(float seconds, int count);
    bool receiveCharacter();

    MSComm& port_;
    Clock& clock_;
    std::int64_t counterOrigin_ = 0;
    bool abandoned_ = false;
    bool readOnly_ = false;
    bool restLeft_ = false; ///< of a reply that was not the answer
    std::uint64_t exchanges_ = 0;
    Exchange* running_ = nullptr;
    double begun_ = 0; ///< of the running exchange, as monotonicSeconds()
    std::vector<ExchangeObserver*> observers_;
    QMetaObject::Connection arrivals_;
    std::string frameText_;
    std::string replyText_;
};

} // namespace quorvel::link
