#include "link/gate.h"

#include <exception>
#include <new>
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
    QString trouble;
    try {
        handler();
    } catch (const std::bad_alloc&) {
        trouble = tr("There was not enough memory.");
    } catch (const std::exception& error) {
        trouble = QString::fromLocal8Bit(error.what());
    }
    busy_ = false;
    unasked_ = false;
    stopRequested_ = false;
    if (!trouble.isEmpty()) Q_EMIT failed(trouble);
    runKept();
    return true;
}

bool Gate::runUnasked(const std::function<void()>& handler)
{
    return run([&] {
        unasked_ = true;
        handler();
    });
}

void Gate::whenIdle(QObject* context, std::function<void()> action)
{
    if (busy()) stopRequested_ = true;
    keep(context, std::move(action));
}

void Gate::runWhenFree(QObject* context, std::function<void()> handler)
{
    keep(context, [this, handler = std::move(handler)] { run(handler); });
}

void Gate::keep(QObject* context, std::function<void()> action)
{
    if (!busy()) return action();
    kept_.push_back({context, std::move(action)});
}

void Gate::runKept()
{
    for (const auto& kept : std::exchange(kept_, {})) {
        if (kept.context) kept.action();
    }
}

} // namespace quorvel::link
