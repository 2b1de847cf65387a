#pragma once

#include "site/sitefile.h"

#include <QDateTime>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::link {
class Module1;
}

/// Reading all readouts of a site, one after the other.
namespace quorvel::site {

/// One readout, asked once.
struct Reading {
    int address = 0;
    QDateTime time; ///< local, at which it was asked
    /// The values as received, eight characters; nothing where the readout has no such sensor or gave no value.
    std::array<std::optional<std::string>, kSensorCount> received;
    /// How the exchange ended, in the words of the traffic: "complete", "silent", "short 16 of 27", "not the answer",
    /// "port lost"; and "no value" for an answer with something else where a number belongs. Of a three-direction
    /// readout that of X and Y when it failed, otherwise that of Z.
    std::string outcome;
    std::optional<double> answerMs; ///< from the end of the question for X and Y to the end of the answer

    bool complete() const;
    /// A value in mm; nothing without.
    std::optional<double> mm(protocol::Sensor sensor) const;
};

/// All readouts, asked once.
struct Sweep {
    QDateTime begun; ///< local
    QDateTime ended;
    std::vector<Reading> readings; ///< in the order of the site
    bool stopped = false;          ///< before all were asked
};

struct SweepWatcher {
    std::function<bool()> stop;                ///< looked at before each readout; may be empty
    std::function<void(const Reading&)> taken; ///< called with each reading; may be empty
};

/// Asks one readout, 27 or 29 characters taken as a reading, without a second try: a silent one costs its time-out, and is
/// not asked for Z. When the port is closed nothing is sent, and the outcome is "port lost".
Reading takeReading(link::Module1& module1, const Readout& readout);

/// Asks each of these readouts by takeReading().
Sweep takeSweep(link::Module1& module1, const std::vector<Readout>& readouts, const SweepWatcher& watcher);

/// The sensors whose value passes the readout's limit.
std::vector<protocol::Sensor> limitsPassed(const Readout& readout, const Reading& reading);

} // namespace quorvel::site
