#include "site/schedule.h"

#include "link/module1.h"

#include <algorithm>

namespace quorvel::site {

namespace {

constexpr qint64 kDayMs = 86'400'000;
constexpr qint64 kPieceMs = 200; // between two looks whether to stop

qint64 msOfDay(const QDateTime& moment) { return moment.time().msecsSinceStartOfDay(); }

} // namespace

QDateTime Schedule::nextAfter(const QDateTime& moment) const
{
    const auto ofDay = std::min(msOfDay(moment) / periodMs_ * periodMs_ + periodMs_, kDayMs);
    auto next = moment.addMSecs(ofDay - msOfDay(moment));
    if (msOfDay(next) % periodMs_ == 0) return next;
    // Summer time has begun or ended in between.
    auto onTheWall = moment;
    if (ofDay == kDayMs) onTheWall.setDate(moment.date().addDays(1));
    onTheWall.setTime(QTime::fromMSecsSinceStartOfDay(static_cast<int>(ofDay % kDayMs)));
    return onTheWall > moment ? onTheWall : next;
}

qint64 Schedule::skippedBetween(const QDateTime& before, const QDateTime& next) const
{
    return std::max<qint64>((before.msecsTo(next) - 1) / periodMs_, 0);
}

std::optional<QDateTime> Schedule::wait(link::Module1& module1, const std::function<bool()>& stop) const
{
    auto& clock = module1.clock();
    auto due = nextAfter(clock.now());
    for (auto left = clock.now().msecsTo(due); left > 0; left = clock.now().msecsTo(due)) {
        if (stop()) return std::nullopt;
        if (left > periodMs_) due = nextAfter(clock.now());
        module1.WaitForInput(static_cast<float>(std::clamp(left, qint64{1}, kPieceMs)) / 1000, 0);
    }
    return stop() ? std::nullopt : std::optional(due);
}

} // namespace quorvel::site
