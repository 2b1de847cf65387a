#include "link/interrupt.h"

#include <csignal>

namespace quorvel::link {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t noted = 0;

extern "C" void note(int number)
{
    noted = number;
    for (const int each : kSignals) {
        std::signal(each, SIG_DFL);
    }
}

} // namespace

void noteInterrupts()
{
    for (const int each : kSignals) {
        std::signal(each, note);
    }
}

int interruptSignal() { return static_cast<int>(noted); }

} // namespace quorvel::link
