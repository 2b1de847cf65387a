#pragma once

#include "link/clock.h"
#include "link/transaction.h"
#include "support/simulated_bus.h"

#include <QDateTime>

#include <deque>

namespace quorvel::test {

/// Time that runs many times as fast as on the wall, for handlers that wait seconds.
class FastClock final : public link::Clock {
public:
    static constexpr int kTimesFaster = 20;

    std::optional<std::int64_t> counterFrequency() const override { return machine_.counterFrequency(); }
    std::int64_t counter() const override { return machine_.counter() * kTimesFaster; }
    double timeOfDay() const override;
    QDateTime now() const override;
    void letEventsRun() override { machine_.letEventsRun(); }
    void idle(double seconds) override { machine_.idle(seconds / kTimesFaster); }
    void sleep(int milliseconds) override { machine_.sleep(milliseconds / kTimesFaster); }

private:
    link::SystemClock machine_;
    QDateTime start_ = machine_.now();
};

/// What happened on the line: never two exchanges at once, and what went out.
class LineWatch final : public link::ExchangeObserver {
public:
    void sending(const link::Exchange& exchange) override;
    void ended(const link::Exchange& exchange) override;

    /// Compares what went out with what the bus has received since the last call.
    void compare(SimulatedBus& bus);

    int exchanges() const { return exchanges_; }
    int complete() const { return complete_; }

private:
    struct Sent {
        QString frame;
        bool mayBeMissing; ///< the adapter was pulled, or nobody answered
    };

    bool underWay_ = false;
    int exchanges_ = 0;
    int complete_ = 0;
    int brokenOff_ = 0; ///< characters of frames that were not sent to their end
    std::deque<Sent> sent_;
    std::deque<QString> received_;
};

} // namespace quorvel::test
