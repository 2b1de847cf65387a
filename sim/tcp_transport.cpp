#include "sim/socket.h"
#include "sim/text.h"
#include "sim/transport.h"
#include "sim/wait.h"

#include <chrono>

namespace quorvelsim {

namespace {

constexpr int kLargestPort = 65535;

/// Not every system shows that a client has gone before it shows the next one.
constexpr double kGoing = 0.2; // s

/// A serial device server with one line: one client at a time, a second one is turned away.
class TcpTransport : public Transport {
public:
    TcpTransport(Socket listener, std::string name) : listener_(std::move(listener)), name_(std::move(name))
    {}

    [[nodiscard]] std::string name() const override { return name_; }

    void watch(std::vector<Watch>& watches) const override
    {
        watches.push_back({listener_.number(), false});
        if (client_.isOpen()) watches.push_back({client_.number(), isPending()});
    }

    std::string receive() override
    {
        std::string characters;
        readClient(characters);
        for (auto arrived = listener_.accept(); arrived.isOpen(); arrived = listener_.accept()) {
            awaitEnd(characters);
            if (!client_.isOpen()) client_ = std::move(arrived);
        }
        return characters;
    }

protected:
    [[nodiscard]] bool hasClient() const override { return client_.isOpen(); }
    std::size_t write(std::string_view characters) override { return client_.write(characters); }

private:
    void readClient(std::string& characters)
    {
        bool ended = false;
        if (client_.isOpen()) characters += client_.read(ended);
        if (!ended) return;
        client_.close();
        dropPending();
    }

    /// Gives a client that is about to go the time for it, and takes what it had written.
    void awaitEnd(std::string& characters)
    {
        using Clock = std::chrono::steady_clock;
        const auto start = Clock::now();
        while (client_.isOpen() && characters.size() < kPending && !stopAsked()) {
            const double left = kGoing - std::chrono::duration<double>(Clock::now() - start).count();
            if (left <= 0) return;
            waitFor({{client_.number(), false}}, false, left);
            readClient(characters);
        }
    }

    Socket listener_;
    Socket client_;
    std::string name_;
};

} // namespace

OpenedTransport openTcp(const std::string& endpoint)
{
    const auto colon = endpoint.rfind(':');
    if (colon == std::string::npos || colon == 0) return {nullptr, "\"" + endpoint + "\" is not host:port"};
    const auto shownHost = endpoint.substr(0, colon);
    const auto port = decimal(endpoint.substr(colon + 1));
    if (!port || *port > kLargestPort) return {nullptr, "the port of \"" + endpoint + "\" is not 0 to 65535"};
    const bool bracketed = shownHost.front() == '[' && shownHost.back() == ']';
    const auto host = bracketed ? shownHost.substr(1, shownHost.size() - 2) : shownHost;

    std::string error;
    auto listener = Socket::listenAt(host, *port, error);
    if (!listener.isOpen()) return {nullptr, endpoint + " could not be opened: " + error};
    auto name = "tcp:" + shownHost + ":" + std::to_string(listener.port());
    return {std::make_unique<TcpTransport>(std::move(listener), std::move(name)), {}};
}

} // namespace quorvelsim
