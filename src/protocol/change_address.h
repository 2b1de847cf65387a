#pragma once

#include "link/transaction.h"

/// Changing a readout's address: ":" old "02" new "FF", answered by the echo. The answer is not awaited character by
/// character: what has arrived after 0.25 s is looked at, and its first seven characters count.
namespace quorvel::protocol {

inline constexpr auto kOldAddressError = "Old Address Input Error";
inline constexpr auto kNewAddressError = "New Address Input Error";
inline constexpr auto kSameAddress = "New Address is same as Old Address, It does not need to set.";
inline constexpr auto kAddressChanged = "New Address Setting Successfully";
inline constexpr auto kAddressNotChanged = "New Address Setting Failed";

/// What is wrong with the two addresses, the old one looked at first; null when the change can be sent.
const char* addressChangeError(int oldAddress, int newAddress);

/// Both addresses are 1..249.
link::Transaction addressChange(int oldAddress, int newAddress);

} // namespace quorvel::protocol
