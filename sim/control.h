#pragma once

#include "sim/bus.h"

#include <functional>
#include <string>
#include <string_view>

namespace quorvelsim {

/// What the control channel can do to the device. An empty name means that it is unplugged.
struct DeviceControl {
    std::function<std::string()> name;
    std::function<void()> unplug;
    std::function<std::string()> plug; ///< puts it back; the reason in words when that fails
};

/// The control channel: one line in, one line of JSON out. A line that is no command, or one that cannot be
/// done, is answered by {"error":"..."} and changes nothing.
class Control {
public:
    Control(Bus& bus, DeviceControl device) : bus_(bus), device_(std::move(device)) {}

    /// Carries out one line, without its line end.
    /// @param now  seconds since the start of the bus.
    std::string handle(std::string_view line, double now);

private:
    struct Row;
    static const Row kRows[];

    std::string state(std::string_view rest, double now);
    std::string readouts(std::string_view rest, double now);
    std::string frames(std::string_view rest, double now);
    std::string fault(std::string_view rest, double now);
    std::string faults(std::string_view rest, double now);
    std::string set(std::string_view rest, double now);
    std::string take(std::string_view rest, double now);
    std::string records(std::string_view rest, double now);
    std::string bitErrors(std::string_view rest, double now);
    std::string reply(std::string_view rest, double now);
    std::string device(std::string_view rest, double now);
    std::string unplug(std::string_view rest, double now);
    std::string plug(std::string_view rest, double now);

    /// Takes the address off the front of `rest`; null when no readout has it.
    Readout* readoutOf(std::string_view& rest);

    Bus& bus_;
    DeviceControl device_;
};

} // namespace quorvelsim
