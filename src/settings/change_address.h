#pragma once

#include <string>
#include <string_view>

/// The talk of changing a readout's address: ":" old "02" new "FF", answered by the echo. The answer is not awaited
/// character by character: what has arrived after a fixed time is looked at.
namespace quorvel::settings {

inline constexpr auto kOldAddressError = "Old Address Input Error";
inline constexpr auto kNewAddressError = "New Address Input Error";
inline constexpr auto kSameAddress = "New Address is same as Old Address, It does not need to set.";
inline constexpr auto kAddressChanged = "New Address Setting Successfully";
inline constexpr auto kAddressNotChanged = "New Address Setting Failed";

inline constexpr float kAddressAnswerTime = 0.25F; ///< s

/// What is wrong with the two addresses, the old one looked at first; null when the change can be sent.
const char* addressChangeError(int oldAddress, int newAddress);

/// The frame, line end included. Both addresses are 1..249.
std::string addressChangeFrame(int oldAddress, int newAddress);

/// True when what was received begins with the first seven characters of the frame.
bool addressChanged(std::string_view frame, std::string_view received);

} // namespace quorvel::settings
