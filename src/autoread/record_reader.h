#pragma once

#include "link/module1.h"
#include "protocol/record.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorvel::autoread {

/// How a record is asked for.
struct Asking {
    int retries =
        0; ///< further questions for a reply that is incomplete, not the one asked for, or cannot be read
    bool verify = false; ///< asks until two replies agree; takes twice the time
    /// Takes every complete reply of the layout's length as it is, whatever it says; asks once.
    bool asPrescribed = false;
    /// Looked at when a reply was incomplete: true asks no more. Empty: never.
    std::function<bool()> stop = {};

    bool isStopped() const { return stop && stop(); }
};

/// What happened on the line.
struct LineCounts {
    int questions = 0;
    int askedAgain = 0;    ///< questions beyond those that a good line needs
    int incomplete = 0;    ///< replies that did not come or were cut short
    int misfits = 0;       ///< whole replies that were not the one asked for
    int disagreements = 0; ///< replies that differ from an earlier one to the same question
    std::size_t noise = 0; ///< characters that belonged to no reply
};

/// What came of asking for one record.
struct Answer {
    enum class Kind {
        Record,     ///< the fields below hold it
        Incomplete, ///< no whole reply came
        Misfit,     ///< whole replies came, but of another readout, or each time different
    };
    Kind kind = Kind::Incomplete;
    protocol::Record record{};
    std::vector<protocol::Unreadable> unreadable{}; ///< fields that stay empty
    std::vector<std::string> misfits{};             ///< how the reply differs from one to the question
    link::Outcome outcome = link::Outcome::Silent;  ///< of the last exchange
    std::string words{}; ///< Incomplete, Misfit: what came instead, a sentence or two
};

/// Asks one readout for records.
///
/// A reply that is incomplete, or not the one asked for, or holds a field that cannot be read, is asked for again. A record
/// that comes unreadable twice in the same form, or whenever it is asked for, is taken with what can be read. A slot or an
/// end mark that is the same wrong one in every reply, of at least two, is the readout's way: the record is taken and the
/// difference described. A reply of another readout or command is never taken, unless `asPrescribed`.
class RecordReader {
public:
    /// @param layout  of the replies; nothing when it is not known: the first whole reply tells it then.
    RecordReader(link::Module1& module1, std::string addressDigits,
                 const std::optional<protocol::RecordLayout>& layout, const Asking& asking);

    /// @param slot  0 to 9999.
    Answer ask(int slot);
    /// Asks, and keeps the answer for the next ask() for this slot, which then sends nothing.
    const Answer& askAhead(int slot);

    /// Nothing as long as it is not known.
    const std::optional<protocol::RecordLayout>& layout() const { return layout_; }
    const LineCounts& counts() const { return counts_; }
    link::Module1& module1() { return module1_; }
    const std::string& addressDigits() const { return addressDigits_; }
    const Asking& asking() const { return asking_; }

private:
    struct Round;
    link::Exchange exchange(int slot);
    void judge(const link::Exchange& exchange, Round& round);
    void judgeWhole(const link::Exchange& exchange, Round& round);
    void judgeFitting(const std::string& reply, Answer answer, Round& round);
    void judgeOdd(const std::string& reply, bool mayBeItsWay, Answer answer, Round& round);

    link::Module1& module1_;
    std::string addressDigits_;
    std::optional<protocol::RecordLayout> layout_;
    Asking asking_;
    LineCounts counts_;
    std::optional<std::pair<int, Answer>> ahead_;
};

} // namespace quorvel::autoread
