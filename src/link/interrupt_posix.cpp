#include "link/interrupt.h"

#include <csignal>

namespace quorvel::link {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t noted = 0;
volatile std::sig_atomic_t reloads = 0;

extern "C" void note(int number)
{
    noted = number;
    for (const int each : kSignals) {
        std::signal(each, SIG_DFL);
    }
}

extern "C" void noteReload(int /*number*/) { reloads = 1; }

} // namespace

void noteReloads()
{
    struct sigaction again {};
    again.sa_handler = noteReload;
    again.sa_flags = SA_RESTART;
    ::sigaction(SIGHUP, &again, nullptr);
}

bool takeReloadRequest()
{
    if (reloads == 0) return false;
    reloads = 0;
    return true;
}

void noteInterrupts()
{
    for (const int each : kSignals) {
        std::signal(each, note);
    }
}

int interruptSignal() { return static_cast<int>(noted); }

} // namespace quorvel::link
