#include "link/interrupt.h"

#include <atomic>
#include <csignal>

#include <windows.h>

namespace quorvel::link {

namespace {

std::atomic<int> noted = 0;

/// Runs in a thread of its own.
BOOL WINAPI note(DWORD event)
{
    const bool key = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    if (noted.exchange(key ? SIGINT : SIGTERM) != 0) return FALSE;
    // A closed console or a shutdown ends the program when this returns; Windows waits some seconds for it.
    if (!key) ::Sleep(INFINITE);
    return TRUE;
}

} // namespace

void noteInterrupts() { ::SetConsoleCtrlHandler(note, TRUE); }

void noteReloads() {}

bool takeReloadRequest() { return false; }

int interruptSignal() { return noted; }

} // namespace quorvel::link
