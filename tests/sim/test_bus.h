#pragma once

#include "sim/bus.h"

#include <string>
#include <string_view>

namespace quorvelsim {

/// Names the cases of a table by their member `name`.
inline constexpr auto caseName = [](const auto& testCase) { return std::string(testCase.param.name); };

/// A bus whose time is moved by hand. Readout 5 is of type A, 12 B, 33 C, 100 D; all clocks start at
/// 2024-05-17 09:05:30.
class TestBus {
public:
    explicit TestBus(Pace pace = kFast) : bus(pace, 1)
    {
        constexpr std::pair<int, std::string_view> kReadouts[] = {{5, "A"}, {12, "B"}, {33, "C"}, {100, "D"}};
        const auto clock = fromIsoTime("2024-05-17T09:05:30").value_or(0);
        for (const auto& [address, letter] : kReadouts)
            bus.add(Readout(address, *findReadoutType(letter), 1, clock));
    }

    /// Sends the command with its line end and gives what is answered up to `seconds` later.
    std::string talk(std::string_view command, double seconds = 60)
    {
        bus.receive(std::string(command) + "\r\n", now);
        now += seconds;
        return bus.due(now);
    }

    Bus bus;
    double now = 0;
};

} // namespace quorvelsim
