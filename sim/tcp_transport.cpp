#include "sim/descriptor.h"
#include "sim/text.h"
#include "sim/transport.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace quorvelsim {

namespace {

constexpr int kLargestPort = 65535;

/// A serial device server with one line: one client at a time, a second one is turned away.
class TcpTransport : public Transport {
public:
    TcpTransport(Descriptor listener, std::string name)
        : listener_(std::move(listener)), name_(std::move(name))
    {}

    [[nodiscard]] std::string name() const override { return name_; }

    void watch(std::vector<pollfd>& descriptors) const override
    {
        const short out = isPending() ? POLLOUT : 0;
        descriptors.push_back({listener_.get(), POLLIN, 0});
        if (client_.isOpen()) descriptors.push_back({client_.get(), static_cast<short>(POLLIN | out), 0});
    }

    std::string receive() override
    {
        std::string characters;
        bool ended = false;
        if (client_.isOpen()) characters = readAvailable(client_.get(), ended);
        if (ended) {
            client_.close();
            dropPending();
        }
        acceptClient();
        return characters;
    }

protected:
    [[nodiscard]] int output() const override { return client_.get(); }

private:
    void acceptClient()
    {
        for (;;) {
            Descriptor arrived(::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
            if (!arrived.isOpen()) return;
            if (client_.isOpen()) continue;
            const int on = 1;
            ::setsockopt(arrived.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            client_ = std::move(arrived);
        }
    }

    Descriptor listener_;
    Descriptor client_;
    std::string name_;
};

Descriptor listenAt(const addrinfo& address)
{
    Descriptor listener(
        ::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol));
    const int on = 1;
    if (listener.isOpen()) ::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (!listener.isOpen() || ::bind(listener.get(), address.ai_addr, address.ai_addrlen) != 0 ||
        ::listen(listener.get(), 4) != 0)
        return {};
    return listener;
}

std::string portOf(const Descriptor& listener)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    char port[NI_MAXSERV] = "0";
    auto* generic = static_cast<sockaddr*>(static_cast<void*>(&address));
    if (::getsockname(listener.get(), generic, &length) == 0)
        ::getnameinfo(generic, length, nullptr, 0, port, sizeof port, NI_NUMERICSERV);
    return port;
}

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

    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    const int result = ::getaddrinfo(host.c_str(), std::to_string(*port).c_str(), &hints, &found);
    if (result != 0) return {nullptr, host + ": " + ::gai_strerror(result)};
    auto listener = listenAt(*found);
    auto error = listener.isOpen() ? std::string{} : systemError(endpoint + " could not be opened");
    ::freeaddrinfo(found);
    if (!error.empty()) return {nullptr, std::move(error)};
    auto name = "tcp:" + shownHost + ":" + portOf(listener);
    return {std::make_unique<TcpTransport>(std::move(listener), std::move(name)), {}};
}

} // namespace quorvelsim
