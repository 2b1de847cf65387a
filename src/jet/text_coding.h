#pragma once

#include "jet/bytes.h"

#include <optional>
#include <string>
#include <string_view>

/// Text as database files store it, and UTF-8.
namespace quorvel::jet {

/// Jet 4 text: UTF-16, or, after FF FE, one byte per character with switches to UTF-16 and back. What is no
/// character becomes U+FFFD.
std::string decodeText(Bytes stored);

/// Jet 3 text. Code page 1252 is known in full, of the others the ASCII half; the rest becomes U+FFFD.
std::string decodeAnsi(Bytes stored, std::uint16_t codePage);

/// UTF-8 as UTF-16LE. @return nothing when `text` is not valid UTF-8.
std::optional<ByteVector> encodeText(std::string_view text);

/// True when two names are the same but for the case of the letters A-Z.
bool sameName(std::string_view a, std::string_view b);

} // namespace quorvel::jet
