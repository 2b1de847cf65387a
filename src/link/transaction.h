#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <optional>
#include <string>

/// One frame and the answer to it: what is asked of the bus (Transaction), and what became of it (Exchange).
namespace quorvel::link {

/// What a frame does to the readouts that it addresses.
enum class Kind {
    Search, ///< asks who is there
    Query,  ///< asks for something and changes nothing
    Set,    ///< changes something that can be changed back
    Delete, ///< removes something for good
};

/// When a reply counts as received, and how it is taken out of the input buffer.
struct ReplyRule {
    enum class Until {
        Count,       ///< `count` characters have come, kCharacterTimeout allowed for each
        LineFeed,    ///< a line feed has come, kCharacterTimeout allowed for each character
        CountOrTime, ///< `count` characters wait, or `seconds` are over; then the whole buffer is taken
        Time,        ///< `seconds` are over; then the whole buffer is taken
    };

    Until until = Until::Count;
    int count = 0; ///< characters of a whole reply, line end included; 0 where it is not known before
    float seconds = 0;
    /// CountOrTime only: a reply that reached `count` may go on up to this many characters, for kRestTime; 0: no.
    int longest = 0;
};

/// What is sent, and what has to come back.
struct Transaction {
    std::string frame; ///< line end included
    Kind kind = Kind::Query;
    ReplyRule reply;
    bool drains = true; ///< what waits in the input buffer is thrown away before the frame
    int head = 5;       ///< leading characters of the frame that every answer to it begins with
    int echoLength = 0; ///< leading characters of the frame that confirm a set command; 0: any answer will do
    bool ignoresBlanks = false; ///< blanks around the reply do not count when it is compared
};

/// How an exchange ended.
enum class Outcome {
    Complete,  ///< as much came as the reply rule asks for
    Silent,    ///< nothing came
    Short,     ///< less came
    PortLost,  ///< the port vanished meanwhile, or was closed
    Abandoned, ///< the program ended meanwhile
    Refused,   ///< nothing was sent: it would have changed a readout, and that is switched off
};

/// A transaction and what became of it.
struct Exchange {
    std::uint64_t number = 0; ///< from 1 on, in the order of sending
    Transaction transaction;
    std::string discarded; ///< what had waited in the input buffer and was thrown away
    std::string reply;     ///< everything that was received, any number of any characters
    std::uint64_t lost =
        0; ///< characters that came while the input buffer was full, since the exchange before
    Outcome outcome = Outcome::Silent;
    QString lostReason; ///< PortLost only: the reason that the port gave; empty when it was closed by hand

    QDateTime begun; ///< local date and time at which the transaction began
    /// Seconds from then on; nothing if there was no such character.
    std::optional<double> firstOut, lastOut, firstIn, lastIn;
    std::size_t sent = 0; ///< characters of the frame that went out

    bool complete() const { return outcome == Outcome::Complete; }
    /// The readout may have taken the frame; it ignores one that breaks off.
    bool frameWentOut() const { return sent == transaction.frame.size(); }
};

/// True when a reply can be the answer to this transaction: it begins with the head of the frame and ends with a line
/// end. One that is shifted by characters that waited before it does not. To a frame for every readout ("FF") the
/// answer of any address will do.
bool answers(const Transaction& transaction, const std::string& reply);
inline bool isAnswered(const Exchange& exchange) { return answers(exchange.transaction, exchange.reply); }

/// True when a complete reply repeats as much of the frame as this command asks for.
bool confirms(const Transaction& transaction, const std::string& reply);
inline bool isConfirmed(const Exchange& exchange)
{
    return exchange.complete() && confirms(exchange.transaction, exchange.reply);
}

/// Sees every exchange of a program, in the order of sending. Both functions are called on the one thread and must be
/// quick: the next character waits for them.
class ExchangeObserver {
public:
    ExchangeObserver() = default;
    ExchangeObserver(const ExchangeObserver&) = delete;
    ExchangeObserver& operator=(const ExchangeObserver&) = delete;
    virtual ~ExchangeObserver() = default;

    /// The frame is about to go out; reply, outcome and times are not known yet. Not called for one that is refused.
    virtual void sending(const Exchange& exchange) = 0;
    /// The exchange has ended. It has the same number as in sending().
    virtual void ended(const Exchange& exchange) = 0;
};

} // namespace quorvel::link
