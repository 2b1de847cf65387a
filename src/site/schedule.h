#pragma once

#include <QDateTime>

#include <functional>
#include <optional>

namespace quorvel::link {
class Module1;
}

namespace quorvel::site {

/// Sweeps every so many seconds, aligned to the clock on the wall: at the multiples of the interval since local midnight,
/// so that every 10 s is at :00, :10, :20 ... A sweep that takes longer skips moments; they never pile up.
class Schedule {
public:
    /// @param seconds  1 to 86400.
    explicit Schedule(int seconds) : periodMs_(qint64{1000} * seconds) {}

    /// The first moment after this one.
    QDateTime nextAfter(const QDateTime& moment) const;
    /// How many moments between two of them were left out.
    qint64 skippedBetween(const QDateTime& before, const QDateTime& next) const;

    /// Waits for the next moment, and looks meanwhile whether to stop. When the machine's clock is set, the moment is
    /// chosen anew.
    /// @return nothing when `stop` said so.
    std::optional<QDateTime> wait(link::Module1& module1, const std::function<bool()>& stop) const;

private:
    qint64 periodMs_;
};

} // namespace quorvel::site
