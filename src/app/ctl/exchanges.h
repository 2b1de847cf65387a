#pragma once

#include "settings/exchange.h"

#include <string>

namespace quorvel::ctl {

class Console;

/// Sends a command to the open readout, late characters of an earlier answer thrown away, and receives the reply
/// into console.module1().ReplyText().
/// @return false when it did not arrive whole: the reason is on stderr and the status set.
bool ask(Console& console, settings::Exchange exchange);

/// ask(), and false also when the reply does not confirm the command. Tells of success, too.
bool order(Console& console, const settings::Exchange& exchange);

/// Tells that a command failed, and why.
void failed(Console& console, const char* text, const settings::Exchange& exchange);

} // namespace quorvel::ctl
