#pragma once

#include "link/address.h"
#include "link/module1.h"
#include "protocol/shape.h"

#include <QString>

#include <functional>
#include <vector>

/// Finding readouts by asking address after address.
namespace quorvel::line {

/// How long a silent address is waited for: three times the slowest answer seen, within two bounds. What comes later is
/// still taken for the answer that it is.
class Patience {
public:
    static constexpr double kFirst = 0.3;    ///< s, before anything has answered
    static constexpr double kShortest = 0.1; ///< s; an answer of 11 characters takes 0.016 s at 9600 baud
    static constexpr double kLongest = 0.35; ///< s; with it 249 silent addresses take less than two minutes

    /// Seconds to wait for the next one.
    double seconds() const;
    /// @param seconds  from the end of the frame to the last character of the answer.
    void answeredAfter(double seconds);

private:
    double slowest_ = 0;
};

/// A readout that answered.
struct FoundReadout {
    int address = 0;
    double answerMs = 0; ///< from the end of the frame to the last character of its answer
    QString type{};      ///< "C" or "A, B or D"; empty when it cannot be told
    QString remark{};    ///< what is wrong with its answers, two readouts with one address for example
};

/// What is said when an adapter sent back what was sent.
inline constexpr auto kEchoRemark = "The adapter sends back what it sends; that was not taken for answers.";

/// The addresses to ask, both included.
struct FinderTask {
    int from = link::kLowestAddress;
    int to = link::kHighestAddress;

    int count() const { return to - from + 1; }
};

/// What the search asks and reports while it runs.
struct FinderWatcher {
    std::function<bool()> stop; ///< asked before each exchange; true ends the search
    /// An address is about to be asked. @param secondsLeft  by the pace so far.
    std::function<void(int address, double secondsLeft)> asking;
    /// A readout has answered, mostly in ascending order; again when more is known of it.
    std::function<void(const FoundReadout&)> found;
};

/// How it ended.
struct FinderResult {
    std::vector<FoundReadout> readouts; ///< by address
    bool stopped = false;
    bool echoes = false; ///< an adapter sent back what was sent; that is no answer
    QString lostReason;  ///< the port vanished; empty otherwise
};

/// Asks each address with one short query ("Read the reference feature", 11 characters), which changes nothing, and
/// those that answer for their readings, which tell the type and whether two readouts speak at once. Each is an
/// exchange like any other; events run meanwhile. The port must be open.
///
/// @param task  1 <= from <= to <= 249.
FinderResult findReadouts(link::Module1& module1, const FinderTask& task, const FinderWatcher& watcher);

} // namespace quorvel::line
