#pragma once

#include "link/transaction.h"
#include "protocol/command.h"

#include <string>
#include <string_view>

/// Exchanges in words, for whoever watches the line.
namespace quorvel::protocol {

/// The command of a frame; null for a frame that is not one of ours.
const Command* commandOf(std::string_view frame);

/// The address that a frame is sent to, 0 to 255; -1 when it has none.
int addressOf(std::string_view frame);

/// What stands between the command digits and the end mark; empty when the frame is not one of ours.
std::string_view parameterOf(std::string_view frame);

/// What a frame is for: "Read X and Y", "Set the offset of X to +1.50000", "Fetch a stored record 0007"; without a
/// frame "Listen", for one that is not ours "Unknown command".
std::string meaningOf(std::string_view frame);

/// How an exchange ended, as traffic and journal call it: "complete", "not the answer", "silent", "short 16 of 17",
/// "port lost", "abandoned", "refused".
std::string outcomeOf(const link::Exchange& exchange);

/// The same without numbers, for filters and counts.
enum class Verdict { Complete, NotTheAnswer, Silent, Short, PortLost, Abandoned, Refused };
inline constexpr int kVerdicts = 7;
Verdict verdictOf(const link::Exchange& exchange);
std::string_view nameOf(Verdict verdict);
std::string_view nameOf(link::Kind kind);

} // namespace quorvel::protocol
