#include "sim/wait.h"

#include <cerrno>
#include <cmath>
#include <csignal>
#include <ctime>
#include <poll.h>
#include <unistd.h>

namespace quorvelsim {

namespace {

volatile std::sig_atomic_t askedToStop = 0;

void askStop(int /*signal*/) { askedToStop = 1; }

std::timespec timespecOf(double seconds)
{
    const auto whole = std::floor(seconds);
    return {static_cast<std::time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
}

} // namespace

// SIGTERM and SIGINT come in only while the server waits.
void prepareSignals()
{
    struct sigaction action = {};
    action.sa_handler = askStop;
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGTERM, SIGINT}) {
        ::sigaction(signal, &action, nullptr);
        sigaddset(&held, signal);
    }
    ::sigprocmask(SIG_BLOCK, &held, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

bool stopAsked() { return askedToStop != 0; }

bool waitFor(const std::vector<Watch>& watches, bool control, std::optional<double> seconds)
{
    std::vector<pollfd> descriptors;
    descriptors.reserve(watches.size() + 1);
    // poll() passes over the descriptor -1.
    descriptors.push_back({control ? STDIN_FILENO : -1, POLLIN, 0});
    for (const auto& watch : watches) {
        const short events = watch.toWrite ? POLLIN | POLLOUT : POLLIN;
        descriptors.push_back({static_cast<int>(watch.number), events, 0});
    }
    const auto timeout = timespecOf(seconds.value_or(0));
    sigset_t open;
    sigemptyset(&open);
    const int ready = ::ppoll(descriptors.data(), descriptors.size(), seconds ? &timeout : nullptr, &open);
    return ready > 0 && descriptors.front().revents != 0;
}

std::optional<std::string> readControl()
{
    char buffer[4096];
    const auto count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) return std::nullopt;
    return std::string(buffer, static_cast<std::size_t>(count < 0 ? 0 : count));
}

} // namespace quorvelsim
