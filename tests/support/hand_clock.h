#pragma once

#include "link/clock.h"

#include <QCoreApplication>

#include <cmath>
#include <functional>
#include <map>

namespace quorvel::test {

/// A clock that only moves when somebody waits: waiting costs no real time. Things can be planned for a moment.
class HandClock final : public link::Clock {
public:
    std::optional<std::int64_t> counterFrequency() const override { return frequency; }
    std::int64_t counter() const override { return counterStart + static_cast<std::int64_t>(passed_ * 1e6); }
    double timeOfDay() const override { return std::fmod(startTimeOfDay + passed_, 86400.0); }
    QDateTime now() const override { return startNow.addMSecs(std::llround(passed_ * 1000)); }

    void letEventsRun() override
    {
        if (QCoreApplication::instance()) QCoreApplication::processEvents();
        if (onEvents) onEvents();
    }
    /// Moves on to the next planned moment, at most by `seconds`.
    void idle(double seconds) override { advance(seconds, true); }
    void sleep(int milliseconds) override { advance(milliseconds / 1000.0, false); }

    /// Lets `action` happen when `seconds` from now have passed.
    void plan(double seconds, std::function<void()> action)
    {
        plans_.emplace(passed_ + seconds, std::move(action));
    }
    /// Seconds passed since the clock was made.
    double passed() const { return passed_; }
    /// Moves the clock without waiting.
    void move(double seconds) { advance(seconds, false); }

    std::optional<std::int64_t> frequency = 1'000'000;
    std::int64_t counterStart = 0;
    double startTimeOfDay = 36000;
    QDateTime startNow{QDate(2024, 5, 17), QTime(9, 5, 30)};
    std::function<void()> onEvents; ///< called whenever events may run

private:
    void advance(double seconds, bool stopAtPlan)
    {
        const double end = passed_ + seconds;
        while (!plans_.empty() && plans_.begin()->first <= end) {
            auto plan = plans_.extract(plans_.begin());
            passed_ = std::max(passed_, plan.key());
            plan.mapped()();
            if (stopAtPlan) return;
        }
        passed_ = end;
    }

    double passed_ = 0;
    std::multimap<double, std::function<void()>> plans_;
};

} // namespace quorvel::test
