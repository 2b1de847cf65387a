#pragma once

namespace quorvel::link {

/// Sleeps, as exactly as the system can; one source file per platform.
/// @param seconds  nothing happens when it is 0 or less.
void sleepFor(double seconds);

} // namespace quorvel::link
