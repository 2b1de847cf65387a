#pragma once

#include "sim/commands.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvelsim {

/// An answer on its way to the line.
struct Answer {
    std::string text;       ///< empty: silence
    double lateSeconds = 0; ///< on top of the answering delay
    bool hangUp = false;    ///< the adapter is pulled behind the text
};

/// What is being answered.
struct Asked {
    Readout& readout;
    int address = 0;       ///< that the frame went to; the readout may have another one by now
    std::string_view code; ///< command digits
    double now = 0;        ///< seconds since the start of the bus
};

struct FaultKind;

/// One fault asked for: what goes wrong, with which command of which readout, how often.
struct Fault {
    const FaultKind* kind = nullptr;
    double amount = 0; ///< meaning and default by kind
    int address = 0;   ///< 0: any readout
    std::string code;  ///< leading digits of the command, or "*"
    int left = -1;     ///< how often still; -1 for ever
    int skip = 0;      ///< how many answers pass unharmed first
};

/// The faults that are in force, in the order they were asked for.
class Faults {
public:
    explicit Faults(std::uint64_t seed = 1) : seed_(seed) {}

    /// Adds "KIND[=AMOUNT]@[ADDRESS/]COMMAND[:[COUNT][+SKIP]]".
    /// @return the reason in words when the text is none; empty when it was added.
    std::string add(std::string_view text);

    void clear() { faults_.clear(); }

    /// Spoils the answer when a fault is in force for it. At most one fault spoils one answer.
    /// @return the name of the fault's kind; empty when the answer was left as it is.
    std::string_view apply(Answer& answer, const Asked& asked);

private:
    std::vector<Fault> faults_;
    std::uint64_t seed_;
    std::uint64_t applied_ = 0;
};

} // namespace quorvelsim
