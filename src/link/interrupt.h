#pragma once

/// Being asked from outside to end: Ctrl+C, a shutdown, a closed terminal.
namespace quorvel::link {

/// From now on the first SIGINT, SIGTERM or SIGHUP is only noted, so that the program can end at a safe point; a second
/// one ends it at once. On Windows: Ctrl+C and Ctrl+Break as SIGINT, a closed console, logging off and shutdown as
/// SIGTERM. One source file per platform.
void noteInterrupts();

/// After noteInterrupts(): from now on SIGHUP does not ask the program to end, but to read its files anew. Not on Windows.
void noteReloads();

/// Whether SIGHUP has come since the last call, after noteReloads().
bool takeReloadRequest();

/// The signal that was noted; 0 before.
int interruptSignal();

} // namespace quorvel::link
