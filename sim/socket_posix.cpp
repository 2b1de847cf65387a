#include "sim/descriptor.h"
#include "sim/socket.h"

#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace quorvelsim {

namespace {

int descriptorOf(const Socket& socket) { return static_cast<int>(socket.number()); }

} // namespace

Socket Socket::listenAt(const std::string& host, int port, std::string& error)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    const int result = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (result != 0) {
        error = ::gai_strerror(result);
        return {};
    }
    Socket listener(
        ::socket(found->ai_family, found->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, found->ai_protocol));
    const int on = 1;
    if (listener.isOpen()) ::setsockopt(descriptorOf(listener), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (!listener.isOpen() || ::bind(descriptorOf(listener), found->ai_addr, found->ai_addrlen) != 0 ||
        ::listen(descriptorOf(listener), 4) != 0) {
        error = std::strerror(errno);
        listener.close();
    }
    ::freeaddrinfo(found);
    return listener;
}

void Socket::close()
{
    if (isOpen()) ::close(descriptorOf(*this));
    number_ = kNone;
}

int Socket::port() const
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    char port[NI_MAXSERV] = "0";
    auto* generic = static_cast<sockaddr*>(static_cast<void*>(&address));
    if (::getsockname(descriptorOf(*this), generic, &length) == 0)
        ::getnameinfo(generic, length, nullptr, 0, port, sizeof port, NI_NUMERICSERV);
    return std::stoi(port);
}

Socket Socket::accept() const
{
    Socket arrived(::accept4(descriptorOf(*this), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    const int on = 1;
    if (arrived.isOpen()) ::setsockopt(descriptorOf(arrived), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return arrived;
}

std::string Socket::read(bool& ended) const { return readAvailable(descriptorOf(*this), ended); }

std::size_t Socket::write(std::string_view characters) const
{
    return writeAvailable(descriptorOf(*this), characters);
}

} // namespace quorvelsim
