#pragma once

#include "site/sweep.h"

#include <QByteArray>

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace quorvel::site {

/// What is counted since a program began, in memory that does not grow with time.
struct WatchCounts {
    std::int64_t sweeps = 0;
    std::int64_t skipped = 0; ///< moments at which the sweep before had not ended
    /// Readings by address and outcome, the latter without its numbers: "short".
    std::map<std::pair<int, std::string>, std::int64_t> readings;

    void add(const Sweep& sweep);
};

/// The last sweep as Prometheus reads it, without time stamps, lengths in metres:
///
///     quorvel_position_meters{site,address,name,type,direction}        what a readout measured; without a value no line
///     quorvel_limit_passed{site,address,name,type,direction}           1 or 0, where a limit is set and a value is there
///     quorvel_readout_up{site,address,name,type}                       1 when the reading was complete, otherwise 0
///     quorvel_readings_total{site,address,name,type,outcome}           since the program began
///     quorvel_port_up{site}                                            1 while the port is open
///     quorvel_sweep_end_timestamp_seconds{site}, quorvel_sweep_duration_seconds{site}
///     quorvel_sweeps_total{site}, quorvel_sweeps_skipped_total{site}
QByteArray prometheusText(const Site& site, const Sweep& sweep, const WatchCounts& counts, bool portOpen);

} // namespace quorvel::site
