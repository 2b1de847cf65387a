#include "sim/server.h"

#include "sim/control.h"
#include "sim/wait.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

namespace quorvelsim {

namespace {

constexpr std::size_t kLongestLine = 65536;

/// So far ahead of its line a client may write, as the buffer of a serial port lets it.
constexpr double kAhead = 4; // s

constexpr double kLongestWait = 3600; // s

void printLine(const std::string& line)
{
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

} // namespace

Server::Server(Bus& bus, std::unique_ptr<Transport> transport, Opener opener)
    : bus_(bus), transport_(std::move(transport)), opener_(std::move(opener)),
      start_(std::chrono::steady_clock::now())
{}

double Server::now() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

int Server::run(bool control)
{
    printLine(transport_->name());
    while (!stopAsked()) {
        const bool line = wait(control);
        serveClient();
        if (line && !takeControlLines()) break;
    }
    return 0;
}

/// @return true when there is something on standard input.
bool Server::wait(bool control)
{
    std::vector<Watch> watches;
    auto due = bus_.nextDue();
    if (caughtUpAt() > now()) {
        due = std::min(due.value_or(caughtUpAt()), caughtUpAt());
    } else if (transport_) {
        transport_->watch(watches);
    }
    if (due) due = std::clamp(*due - now(), 0.0, kLongestWait);
    return waitFor(watches, control, due);
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
    const auto read = readControl();
    if (!read) return false;
    controlText_ += *read;
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

} // namespace quorvelsim
