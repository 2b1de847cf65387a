#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The talk of the bus search. Every readout answers the broadcast with ":" and its address in two hexadecimal
/// digits, in ascending order of the addresses; what follows these is the readout's own.
namespace quorvel::search {

inline constexpr float kAnswerTime = 2.55F; ///< s, within which all readouts answer
inline constexpr auto kSearching = "Searching, please wait......";
inline constexpr auto kNothingFound = "No Sensors(or MCU) Found";

/// The broadcast frame, line end included.
std::string searchFrame();

/// The addresses in all that was received, as decimal text of at least two digits ("05", "249"), in the order
/// received. Noise between two answers is skipped.
std::vector<std::string> foundAddresses(std::string received);

/// The addresses joined by ",", or kNothingFound.
std::string foundText(const std::vector<std::string>& addresses);

} // namespace quorvel::search
