#pragma once

#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"

#include <functional>

namespace quorvel {

/// What every window works with. The program owns it; it outlives all windows.
struct Workplace {
    link::Bench& bench;
    link::Module1& module1;
    link::Gate& gate;
    Messages& messages;
    /// Tests why readouts do not answer, in a window that belongs to `parent`; null where there is no such test.
    /// @param address  of the readout in question, as typed.
    std::function<void(QWidget* parent, const QString& address)> whyNoAnswer = {};
};

} // namespace quorvel
