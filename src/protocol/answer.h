#pragma once

#include "link/transaction.h"

#include <QString>

#include <optional>
#include <string>
#include <string_view>

/// What is said about an answer, whatever the command was.
namespace quorvel::protocol {

inline constexpr auto kCommError = "Comm Error";
inline constexpr auto kSetOk = "Set OK!";
inline constexpr auto kSetFailed = "Set Failed!";

/// A state that a field of two digits holds: "01" is on, "00" is off, anything else is nothing.
std::optional<bool> flagIn(std::string_view field);

/// Why a command that was not confirmed failed, in one sentence for the operator.
QString whyFailed(const link::Exchange& exchange);

/// A reply as part of a sentence: without its line end, other control characters as "?".
std::string inOneLine(std::string_view reply);

/// Received characters for people: one line, what cannot be printed as "\x" and two hexadecimal digits.
std::string printable(std::string_view received);

} // namespace quorvel::protocol
