#pragma once

#include "site/portkeeper.h"
#include "site/schedule.h"
#include "site/watchoutput.h"

#include <functional>
#include <optional>

namespace quorvel::site {

/// Sweeps over a site again and again, for years: at every moment of the schedule there is a sweep of values or failures.
/// A port that vanishes is opened again when it comes back.
class Watch {
public:
    struct Hands {
        std::function<bool()> stop;
        std::function<void(const QString& words)> tell; ///< for the log
        /// A new site when one was asked for; may be empty.
        std::function<std::optional<Site>()> reload;
    };

    Watch(link::Module1& module1, PortKeeper& port, Site site, WatchOutput& output, Hands hands);

    /// @param count  sweeps to take; 0: until stopped.
    void run(const Schedule& schedule, int count);

    const WatchCounts& counts() const { return counts_; }

private:
    void sweep();
    void noteSkipped(qint64 skipped);

    link::Module1& module1_;
    PortKeeper& port_;
    Site site_;
    WatchOutput& output_;
    Hands hands_;
    WatchCounts counts_;
    bool failing_ = false; ///< the output, which has been told
    bool skipping_ = false;
};

} // namespace quorvel::site
