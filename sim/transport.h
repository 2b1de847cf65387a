#pragma once

#include "sim/wait.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvelsim {

/// The device that clients open. Nothing here waits; watch() says what to wait for.
class Transport {
public:
    Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    virtual ~Transport() = default;

    /// What a client gives as its port: "/dev/pts/3" or "tcp:127.0.0.1:4001".
    [[nodiscard]] virtual std::string name() const = 0;

    /// Adds what to wait for.
    virtual void watch(std::vector<Watch>& watches) const = 0;

    /// Lets clients come and go, and takes what they wrote; empty when nothing came.
    virtual std::string receive() = 0;

    /// Hands characters to the client. What it cannot take at once follows later, as far as kPending allows;
    /// without a client they are lost, as on a wire that nobody listens to.
    void send(std::string_view characters);

    /// Hands over what waits from earlier.
    void flush();

protected:
    /// More than the longest answer; a client that takes nothing costs no more than this.
    static constexpr std::size_t kPending = 65536;

    [[nodiscard]] bool isPending() const { return !pending_.empty(); }
    void dropPending() { pending_.clear(); }

    [[nodiscard]] virtual bool hasClient() const = 0;

    /// Hands the client what it takes without waiting. @return how many characters that were.
    virtual std::size_t write(std::string_view characters) = 0;

private:
    std::string pending_;
};

/// A device, or the reason in words why there is none.
struct OpenedTransport {
    std::unique_ptr<Transport> transport;
    std::string error;
};

OpenedTransport openPty();

/// @param endpoint  "host:port", the host perhaps in brackets; port 0 takes a free one.
OpenedTransport openTcp(const std::string& endpoint);

} // namespace quorvelsim
