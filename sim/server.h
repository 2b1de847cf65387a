#pragma once

#include "sim/bus.h"
#include "sim/transport.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace quorvelsim {

/// Runs a bus on a device: waits for whatever comes first, a client's characters, a control line, or the moment
/// an answer's next character is due. Sleeps in between.
class Server {
public:
    using Opener = std::function<OpenedTransport()>;

    /// @param transport  where clients come in.
    /// @param opener     makes another one after an unplug.
    Server(Bus& bus, std::unique_ptr<Transport> transport, Opener opener);

    /// Serves until SIGTERM or SIGINT, or, with `control`, until standard input ends.
    /// @return the exit status of the program.
    int run(bool control);

private:
    [[nodiscard]] double now() const;
    bool wait(bool control);
    [[nodiscard]] double caughtUpAt() const;
    bool takeControlLines();
    void serveClient();
    std::string plug();

    Bus& bus_;
    std::unique_ptr<Transport> transport_;
    Opener opener_;
    std::chrono::steady_clock::time_point start_;
    std::string controlText_;
    bool tooLong_ = false; ///< the beginning of the present control line was thrown away
};

} // namespace quorvelsim
