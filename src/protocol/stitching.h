#pragma once

#include "link/transaction.h"

#include <string>
#include <string_view>

/// The Y-direction stitching location: four characters that are never read as a number. Both replies have
/// 15 characters, counted from 1:
///
///     1  ":"   2-3 address   4-7 "7822" or "7821"   8-11 location   12-13 "FF"   14-15 CR LF
namespace quorvel::protocol {

inline constexpr std::size_t kLocationLength = 4; ///< characters
inline constexpr auto kLocationError = "Location input error, pls input 4 numbers";
inline constexpr auto kLocationIs = "Y-Direction stitching location is ";
inline constexpr auto kLocationSet = "SetOK!";

link::Transaction locationQuery(std::string_view addressDigits);

/// The location goes out as typed, blanks around it included. It is confirmed by an echo of address, command and its
/// first four characters.
link::Transaction locationSet(std::string_view addressDigits, std::string_view typed);

/// True when four characters are left without the blanks around them; any four will do.
bool isLocation(std::string_view typed);

/// The location in a reply to the query; shorter when the reply is.
std::string locationOf(std::string_view reply);

} // namespace quorvel::protocol
