#pragma once

#include "link/transaction.h"

#include <optional>
#include <string_view>

/// The reference feature: whether a readout corrects its readings with a stored reference.
///
///     ":" address "75" "01"|"00" "FF"   set      ":" address "76FF"   query, the state in characters 6-7
namespace quorvel::protocol {

inline constexpr auto kReferenceUsed = "Use Reference to Correct!";
inline constexpr auto kReferenceNotUsed = "Not Use Reference to Correct!";

/// The input buffer is not drained before either of these two. A set counts the first seven characters of the
/// reply, blanks around it apart.
link::Transaction featureSet(std::string_view addressDigits, bool on);
link::Transaction featureQuery(std::string_view addressDigits);

/// The state in the answer to the query as the windows take it: off for "00", on for anything else.
bool featureIsOn(std::string_view reply);
/// The same for what is kept or handed on: nothing when it is neither "00" nor "01".
std::optional<bool> featureStateOf(std::string_view reply);

} // namespace quorvel::protocol
