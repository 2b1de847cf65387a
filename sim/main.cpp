#include "sim/options.h"
#include "sim/server.h"
#include "sim/wait.h"

#include <cstdio>

namespace {

int fail(const std::string& reason)
{
    std::fprintf(stderr, "quorvel-sim: %s\n", reason.c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace quorvelsim;
    Options options;
    if (const auto status = readOptions(argc, argv, options)) return *status;
    Bus bus(options.fast ? kFast : kPaced, options.seed);
    if (const auto reason = fillBus(options, bus); !reason.empty()) return fail(reason);
    if (!options.bitErrors.empty()) {
        std::fprintf(stderr, "quorvel-sim: bit errors at %s of the characters each way, seed %s\n",
                     options.bitErrors.substr(0, options.bitErrors.find(',')).c_str(),
                     std::to_string(bus.bitErrors().seed()).c_str());
    }
    prepareSignals();
    auto opened = options.tcp.empty() ? openPty() : openTcp(options.tcp);
    if (!opened.transport) return fail(opened.error);
    // Plugged in again, a TCP bus listens where it did before, also when it had picked the port itself.
    const auto endpoint = options.tcp.empty() ? std::string{} : opened.transport->name().substr(4);
    const auto open = [endpoint] { return endpoint.empty() ? openPty() : openTcp(endpoint); };
    return Server(bus, std::move(opened.transport), open).run(options.control);
}
