#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What a server waits for; one source file per platform.
namespace quorvelsim {

/// A descriptor or socket, as the system counts it.
struct Watch {
    std::intptr_t number;
    bool toWrite; ///< room to write is waited for as well
};

/// Being asked to end (Ctrl+C, SIGTERM, a closed console) is noted from now on, and no broken pipe ends the program.
void prepareSignals();

/// True once the program was asked to end.
bool stopAsked();

/// Sleeps until something happens to what is watched, there is something on standard input (if `control`), the time is
/// over (if any), or the program is asked to end.
/// @return true when there is something on standard input, or it has ended.
bool waitFor(const std::vector<Watch>& watches, bool control, std::optional<double> seconds);

/// What stands on standard input, without waiting; nothing when it has ended.
std::optional<std::string> readControl();

} // namespace quorvelsim
