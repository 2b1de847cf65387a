#pragma once

namespace quorvel::link {

/// Sleeps, as exactly as the system can; one source file per platform.
/// @param seconds  nothing happens when it is 0 or less.
void sleepFor(double seconds);

/// How much later than asked for the event loop may wake, s. What is left of a wait then is slept without it.
double loopResolution();

} // namespace quorvel::link
