#pragma once

#include "link/transaction.h"

#include <optional>

namespace quorvel::ctl {

class Console;

/// Sends a command to the open readout, late characters of an earlier answer thrown away.
/// @return the exchange; nothing when the reply was not complete: the reason is reported.
std::optional<link::Exchange> ask(Console& console, link::Transaction transaction);

/// ask(), and false also when the reply does not confirm the command. Reports success, too.
bool order(Console& console, const link::Transaction& transaction);

/// Reports that a command failed, and why; by failureOf(exchange).
void failed(Console& console, const char* text, const link::Exchange& exchange);

} // namespace quorvel::ctl
