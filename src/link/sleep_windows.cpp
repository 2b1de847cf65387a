#include "link/sleep.h"

#include <windows.h>

// mmsystem.h needs the types of windows.h
#include <mmsystem.h>

namespace quorvel::link {

namespace {

// Of newer headers: the timer does not wait for the next tick of the clock, up to 15.6 ms away. Since Windows 10.
constexpr DWORD kHighResolution = 0x2;

constexpr double kTicksPerSecond = 1e7; // a timer counts in units of 100 ns

/// A timer, or nullptr; before Windows 10 with ticks of 1 ms for the whole program.
HANDLE newTimer()
{
    const HANDLE timer = ::CreateWaitableTimerExW(nullptr, nullptr, kHighResolution, TIMER_ALL_ACCESS);
    if (timer != nullptr) return timer;
    ::timeBeginPeriod(1);
    return ::CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_ALL_ACCESS);
}

} // namespace

// Sleep() counts in whole ticks.
void sleepFor(double seconds)
{
    static const HANDLE timer = newTimer();
    LARGE_INTEGER due{};
    due.QuadPart = -static_cast<LONGLONG>(seconds * kTicksPerSecond); // from now on
    if (due.QuadPart >= 0) return;
    if (timer != nullptr && ::SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE) != 0) {
        ::WaitForSingleObject(timer, INFINITE);
    } else {
        ::Sleep(static_cast<DWORD>(seconds * 1000));
    }
}

// A tick of the clock. Qt has means for shorter waits, a thread for each, which cost more than the pause of a character.
double loopResolution() { return 0.016; }

} // namespace quorvel::link
