#pragma once

#include "settings/exchange.h"

#include <string_view>

/// The talk of the reference feature: whether a readout corrects its readings with a stored reference.
///
///     ":" address "75" "01"|"00" "FF"   set      ":" address "76FF"   query, the state in characters 6-7
namespace quorvel::settings {

inline constexpr auto kReferenceUsed = "Use Reference to Correct!";
inline constexpr auto kReferenceNotUsed = "Not Use Reference to Correct!";

/// The input buffer is not drained before either of these two. A set counts the first seven characters of the
/// reply, blanks around it apart.
Exchange featureSet(std::string_view addressDigits, bool on);
Exchange featureQuery(std::string_view addressDigits);

/// The state in the answer to the query: off for "00", on for anything else.
bool featureIsOn(std::string_view reply);

} // namespace quorvel::settings
