#include "link/clock.h"

#include "link/sleep.h"

#include <QCoreApplication>

#include <cmath>

namespace quorvel::link {

namespace {

using std::chrono::duration;
using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr double kSecondsPerDay = 86400;

} // namespace

SystemClock::SystemClock()
    : startTimeOfDay_(QTime::currentTime().msecsSinceStartOfDay() / 1000.0), start_(steady_clock::now())
{
    alarm_.setSingleShot(true);
    alarm_.setTimerType(Qt::PreciseTimer);
}

std::optional<std::int64_t> SystemClock::counterFrequency() const { return microseconds::period::den; }

std::int64_t SystemClock::counter() const
{
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

double SystemClock::timeOfDay() const
{
    const double passed = duration<double>(steady_clock::now() - start_).count();
    return std::fmod(startTimeOfDay_ + passed, kSecondsPerDay);
}

QDateTime SystemClock::now() const { return QDateTime::currentDateTime(); }

void SystemClock::letEventsRun() { QCoreApplication::processEvents(); }

void SystemClock::idle(double seconds)
{
    const double inLoop = std::floor((seconds - loopResolution()) * 1000);
    if (inLoop >= 1) {
        alarm_.start(milliseconds(static_cast<std::int64_t>(inLoop)));
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    } else if (seconds > 0) {
        sleepFor(seconds);
    }
}

void SystemClock::sleep(int milliseconds) { sleepFor(milliseconds / 1000.0); }

} // namespace quorvel::link
