#include "sim/server.h"

#include "sim/control.h"
#include "sim/descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <utility>

namespace quorvelsim {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr std::size_t kLongestLine = 65536;

/// So far ahead of its line a client may write, as the buffer of a serial port lets it.
constexpr double kAhead = 4; // s

volatile std::sig_atomic_t stopAsked = 0;

void askStop(int /*signal*/) { stopAsked = 1; }

std::int64_t monotonicNanoseconds()
{
    std::timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * kNanoseconds + time.tv_nsec;
}

std::timespec timespecOf(double seconds)
{
    const auto whole = std::floor(seconds);
    return {static_cast<std::time_t>(whole),
            static_cast<long>((seconds - whole) * static_cast<double>(kNanoseconds))};
}

void printLine(const std::string& line)
{
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

} // namespace

Server::Server(Bus& bus, std::unique_ptr<Transport> transport, Opener opener)
    : bus_(bus), transport_(std::move(transport)), opener_(std::move(opener)),
      startNanoseconds_(monotonicNanoseconds())
{}

double Server::now() const
{
    return static_cast<double>(monotonicNanoseconds() - startNanoseconds_) /
           static_cast<double>(kNanoseconds);
}

int Server::run(bool control)
{
    printLine(transport_->name());
    while (stopAsked == 0) {
        const bool line = wait(control);
        serveClient();
        if (line && !takeControlLines()) break;
    }
    return 0;
}

/// @return true when there is something on standard input.
bool Server::wait(bool control)
{
    std::vector<pollfd> descriptors;
    // poll() passes over the descriptor -1.
    descriptors.push_back({control ? STDIN_FILENO : -1, POLLIN, 0});
    auto due = bus_.nextDue();
    if (caughtUpAt() > now()) {
        due = std::min(due.value_or(caughtUpAt()), caughtUpAt());
    } else if (transport_) {
        transport_->watch(descriptors);
    }
    std::timespec timeout{};
    if (due) timeout = timespecOf(std::clamp(*due - now(), 0.0, 3600.0));
    sigset_t open;
    sigemptyset(&open);
    const int ready = ::ppoll(descriptors.data(), descriptors.size(), due ? &timeout : nullptr, &open);
    return ready > 0 && descriptors.front().revents != 0;
}

/// When more of what the client writes is taken.
double Server::caughtUpAt() const { return bus_.receivedUntil() - kAhead; }

void Server::serveClient()
{
    if (transport_ && caughtUpAt() <= now()) {
        const auto characters = transport_->receive();
        bus_.receive(characters, now());
    }
    const auto out = bus_.due(now());
    if (!transport_) return;
    transport_->flush();
    if (!out.empty()) transport_->send(out);
    if (!bus_.takeHangUp()) return;
    transport_.reset();
    bus_.forget();
}

/// @return false when standard input has ended.
bool Server::takeControlLines()
{
    char buffer[4096];
    const auto count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count < 0) return errno == EINTR || errno == EAGAIN;
    if (count == 0) return false;
    controlText_.append(buffer, static_cast<std::size_t>(count));
    Control control(bus_, {[this] { return transport_ ? transport_->name() : std::string{}; },
                           [this] { transport_.reset(); }, [this] { return plug(); }});
    for (auto end = controlText_.find('\n'); end != std::string::npos; end = controlText_.find('\n')) {
        auto line = controlText_.substr(0, end);
        controlText_.erase(0, end + 1);
        if (std::exchange(tooLong_, false)) line = "a line that is too long";
        if (line.ends_with('\r')) line.pop_back();
        if (!line.empty()) printLine(control.handle(line, now()));
    }
    // what follows up to the line end is not a line of its own
    if (controlText_.size() > kLongestLine) {
        controlText_.clear();
        tooLong_ = true;
    }
    return true;
}

std::string Server::plug()
{
    auto opened = opener_();
    transport_ = std::move(opened.transport);
    return opened.error;
}

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

} // namespace quorvelsim
