#pragma once

#include <QDateTime>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <optional>

namespace quorvel::link {

/// Everything that waits or asks the time takes one of these, so that a test can move time by hand.
class Clock {
public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Ticks per second of the high-resolution counter; nothing when the machine has none.
    virtual std::optional<std::int64_t> counterFrequency() const = 0;
    /// The high-resolution counter. It only ever grows; where it starts does not matter.
    virtual std::int64_t counter() const = 0;
    /// Seconds since midnight, 0 to below 86400. It runs evenly from midnight to midnight, whatever happens to
    /// the machine's date and time meanwhile, because time-outs are measured with it.
    virtual double timeOfDay() const = 0;
    /// The machine's local date and time.
    virtual QDateTime now() const = 0;

    /// Lets pending interface events run, without waiting for any.
    virtual void letEventsRun() = 0;
    /// Sleeps until an event arrives (which is then handled) or `seconds` are nearly over, never longer.
    virtual void idle(double seconds) = 0;
    /// Sleeps; no event is handled meanwhile.
    virtual void sleep(int milliseconds) = 0;
};

/// The machine's own time and event loop.
class SystemClock final : public Clock {
public:
    SystemClock();

    std::optional<std::int64_t> counterFrequency() const override;
    std::int64_t counter() const override;
    double timeOfDay() const override;
    QDateTime now() const override;
    void letEventsRun() override;
    void idle(double seconds) override;
    void sleep(int milliseconds) override;

private:
    double startTimeOfDay_;
    std::chrono::steady_clock::time_point start_;
    QTimer alarm_;
};

} // namespace quorvel::link
