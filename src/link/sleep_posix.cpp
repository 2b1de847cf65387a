#include "link/sleep.h"

#include <chrono>
#include <thread>

namespace quorvel::link {

void sleepFor(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

} // namespace quorvel::link
