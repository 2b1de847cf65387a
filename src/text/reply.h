#pragma once

#include <string>
#include <string_view>

/// Looking into replies by position. Positions are 1-based, as the bus protocol counts them.
namespace quorvel::text {

/// `count` characters of `reply` from 1-based `position` on; what there is when the reply is shorter. Never
/// reads outside the reply: a position below 1 or past the end gives the empty text.
std::string_view mid(std::string_view reply, int position, int count);

/// The first `count` characters, or all when there are fewer.
std::string_view left(std::string_view reply, int count);

/// Without leading and trailing blanks (character 32 only).
std::string_view trimBlanks(std::string_view text);

/// True when the first `count` characters of a reply and of the frame sent are the same; false when either is
/// shorter than that.
bool echoes(std::string_view frame, std::string_view reply, int count);

/// Ends a command as every frame ends: carriage return and line feed.
std::string withLineEnd(std::string_view command);

} // namespace quorvel::text
