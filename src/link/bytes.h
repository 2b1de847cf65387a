#pragma once

#include <QString>

#include <string>
#include <string_view>

/// Between the bytes of the bus and the texts of the windows. Every byte is one character, 0..255.
namespace quorvel::link {

/// Received bytes as they are shown; a byte of 128 or more shows as the Latin-1 character of that number.
QString shown(std::string_view bytes);

/// True when each character of a typed text is one byte, so that it is sent as typed.
bool canBeSent(const QString& text);

/// A typed text as it is sent; characters that are not a single byte become "?".
std::string bytes(const QString& text);

} // namespace quorvel::link
