#include "site/watch.h"

#include <utility>

namespace quorvel::site {

Watch::Watch(link::Module1& module1, PortKeeper& port, Site site, WatchOutput& output, Hands hands)
    : module1_(module1), port_(port), site_(std::move(site)), output_(output), hands_(std::move(hands))
{}

void Watch::run(const Schedule& schedule, int count)
{
    std::optional<QDateTime> before;
    for (int taken = 0; count == 0 || taken < count; taken += count == 0 ? 0 : 1) {
        const auto due = schedule.wait(module1_, [this] {
            if (hands_.stop()) return true;
            port_.keepOpen();
            return false;
        });
        if (!due) return;
        if (before) noteSkipped(schedule.skippedBetween(*before, *due));
        before = due;
        if (hands_.reload) {
            if (auto site = hands_.reload()) site_ = std::move(*site);
        }
        sweep();
        if (hands_.stop()) return;
    }
}

void Watch::sweep()
{
    const auto taken =
        takeSweep(module1_, site_.readouts,
                  {hands_.stop, [this](const Reading& reading) { output_.take(site_, reading); }});
    counts_.add(taken);
    const auto written = output_.end(site_, taken, counts_, port_.isOpen());
    const bool failed = !written;
    if (failed && !failing_) {
        hands_.tell(QString::fromStdString(written.error()) +
                    QStringLiteral(" It is tried again at each sweep."));
    }
    if (!failed && failing_) hands_.tell(QStringLiteral("The readings can be written again."));
    failing_ = failed;
}

void Watch::noteSkipped(qint64 skipped)
{
    counts_.skipped += skipped;
    if (skipped > 0 && !skipping_) {
        hands_.tell(
            QStringLiteral("A sweep took longer than the interval: %1 skipped. Choose a longer interval.")
                .arg(skipped));
    }
    skipping_ = skipped > 0;
}

} // namespace quorvel::site
