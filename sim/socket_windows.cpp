#include "sim/socket.h"

#include <array>
#include <system_error>

#include <winsock2.h>

// ws2tcpip.h needs the types of winsock2.h
#include <ws2tcpip.h>

namespace quorvelsim {

namespace {

SOCKET socketOf(const Socket& socket) { return static_cast<SOCKET>(socket.number()); }

/// Sockets can be used for as long as this lives: as long as the program.
struct Winsock {
    Winsock()
    {
        WSADATA about{};
        ::WSAStartup(MAKEWORD(2, 2), &about);
    }
};

std::string wordsOf(int code) { return std::system_category().message(code); }

void neverWait(const Socket& socket)
{
    u_long on = 1;
    ::ioctlsocket(socketOf(socket), static_cast<long>(FIONBIO), &on);
}

} // namespace

Socket Socket::listenAt(const std::string& host, int port, std::string& error)
{
    static const Winsock sockets;
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    const int result = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (result != 0) {
        error = wordsOf(result);
        return {};
    }
    Socket listener(
        static_cast<std::intptr_t>(::socket(found->ai_family, found->ai_socktype, found->ai_protocol)));
    // Otherwise another program could listen at the same port.
    const BOOL alone = TRUE;
    if (listener.isOpen()) {
        ::setsockopt(socketOf(listener), SOL_SOCKET, SO_EXCLUSIVEADDRUSE,
                     reinterpret_cast<const char*>(&alone), sizeof alone);
        neverWait(listener);
    }
    if (!listener.isOpen() ||
        ::bind(socketOf(listener), found->ai_addr, static_cast<int>(found->ai_addrlen)) != 0 ||
        ::listen(socketOf(listener), 4) != 0) {
        error = wordsOf(::WSAGetLastError());
        listener.close();
    }
    ::freeaddrinfo(found);
    return listener;
}

void Socket::close()
{
    if (isOpen()) ::closesocket(socketOf(*this));
    number_ = kNone;
}

int Socket::port() const
{
    sockaddr_storage address{};
    int length = sizeof address;
    auto* generic = static_cast<sockaddr*>(static_cast<void*>(&address));
    if (::getsockname(socketOf(*this), generic, &length) != 0) return 0;
    // The port lies at the same place in the addresses of both families.
    return ::ntohs(static_cast<const sockaddr_in*>(static_cast<const void*>(&address))->sin_port);
}

Socket Socket::accept() const
{
    Socket arrived(static_cast<std::intptr_t>(::accept(socketOf(*this), nullptr, nullptr)));
    if (!arrived.isOpen()) return arrived;
    neverWait(arrived);
    const BOOL on = TRUE;
    ::setsockopt(socketOf(arrived), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    return arrived;
}

std::string Socket::read(bool& ended) const
{
    std::array<char, 512> buffer{};
    const int count = ::recv(socketOf(*this), buffer.data(), static_cast<int>(buffer.size()), 0);
    if (count > 0) return {buffer.data(), static_cast<std::size_t>(count)};
    ended = count == 0 || ::WSAGetLastError() != WSAEWOULDBLOCK;
    return {};
}

std::size_t Socket::write(std::string_view characters) const
{
    const int count = ::send(socketOf(*this), characters.data(), static_cast<int>(characters.size()), 0);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

} // namespace quorvelsim
