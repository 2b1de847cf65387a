#pragma once

#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"

namespace quorvel {

/// What every window works with. The program owns it; it outlives all windows.
struct Workplace {
    link::Bench& bench;
    link::Module1& module1;
    link::Gate& gate;
    Messages& messages;
};

} // namespace quorvel
