#include "link/gate.h"

#include <utility>

namespace quorvel::link {

Gate::Gate(QObject* parent) : QObject(parent) {}

bool Gate::run(const std::function<void()>& handler)
{
    if (busy()) {
        Q_EMIT refused();
        return false;
    }
    busy_ = true;
    handler();
    busy_ = false;
    stopRequested_ = false;
    runKept();
    return true;
}

void Gate::whenIdle(QObject* context, std::function<void()> action)
{
    if (!busy()) {
        action();
        return;
    }
    stopRequested_ = true;
    kept_.push_back({context, std::move(action)});
}

void Gate::runKept()
{
    for (const auto& kept : std::exchange(kept_, {})) {
        if (kept.context) kept.action();
    }
}

} // namespace quorvel::link
