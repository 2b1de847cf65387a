#pragma once

#include "link/transaction.h"

#include <string>
#include <vector>

/// The bus search. Every readout answers the broadcast with ":" and its address in two hexadecimal digits, in ascending
/// order of the addresses, within 2.55 s; what follows these is the readout's own.
namespace quorvel::protocol {

inline constexpr auto kSearching = "Searching, please wait......";
inline constexpr auto kNothingFound = "No Sensors(or MCU) Found";

/// Takes everything that has come after 2.55 s, also what had waited before.
link::Transaction search();

/// The addresses in all that was received, as decimal text of at least two digits ("05", "249"), in the order
/// received. Noise between two answers is skipped.
std::vector<std::string> foundAddresses(std::string received);

/// The addresses joined by ",", or kNothingFound.
std::string foundText(const std::vector<std::string>& addresses);

} // namespace quorvel::protocol
