#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace quorvelsim {

/// A TCP socket; nothing here waits. One source file per platform.
class Socket {
public:
    Socket() = default;
    Socket(Socket&& other) noexcept : number_(std::exchange(other.number_, kNone)) {}
    Socket& operator=(Socket&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { close(); }

    /// A socket that listens.
    /// @param port   0 takes a free one.
    /// @param error  why none is open then.
    static Socket listenAt(const std::string& host, int port, std::string& error);

    void close();
    [[nodiscard]] bool isOpen() const { return number_ != kNone; }
    /// As the system counts it, to wait for it.
    [[nodiscard]] std::intptr_t number() const { return number_; }

    /// The port that it listens at.
    [[nodiscard]] int port() const;
    /// Somebody who has come; not open when nobody has.
    [[nodiscard]] Socket accept() const;

    /// What can be read without waiting, at most 512 characters: a client that writes without end gets no more attention
    /// than that at a time, and control lines are heard in between.
    /// @param ended  set true when nothing is left and the other side has closed or the connection is broken.
    std::string read(bool& ended) const;
    /// Writes what can be written without waiting. @return how many characters that were.
    [[nodiscard]] std::size_t write(std::string_view characters) const;

private:
    static constexpr std::intptr_t kNone = -1;

    explicit Socket(std::intptr_t number) : number_(number) {}

    std::intptr_t number_ = kNone;
};

} // namespace quorvelsim
