#pragma once

#include <ctime>

namespace quorvel::test {

/// The processor time that this process has taken so far, s. (std::clock() counts real time on Windows.)
inline double processorSeconds()
{
    timespec spent{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
    return static_cast<double>(spent.tv_sec) + static_cast<double>(spent.tv_nsec) / 1e9;
}

} // namespace quorvel::test
