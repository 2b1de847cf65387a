#include "link/sleep.h"

#include <chrono>
#include <thread>

namespace quorvel::link {

void sleepFor(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

// It sleeps in whole milliseconds and may wake one late.
double loopResolution() { return 0.0015; }

} // namespace quorvel::link
