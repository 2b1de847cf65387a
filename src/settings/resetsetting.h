#pragma once

#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"

#include <functional>

namespace quorvel {

/// The menu item "Reset Setting": asks twice, resets the readout, and says how that went. Checks the port itself.
///
/// @param parent  window of the boxes.
/// @param status  shows each step, and after a failure which one failed and why.
void ResetSetting_Click(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                        QWidget* parent, const std::function<void(const QString&)>& status);

} // namespace quorvel
