#pragma once

#include "main/workplace.h"

#include <functional>

namespace quorvel {

/// The menu item "Reset Setting": asks twice, resets the readout, and says how that went. Checks the port itself.
///
/// @param parent  window of the boxes.
/// @param status  shows each step, and after a failure which one failed and why.
void ResetSetting_Click(const Workplace& workplace, QWidget* parent,
                        const std::function<void(const QString&)>& status);

} // namespace quorvel
