#include "text/reply.h"

#include <algorithm>

namespace quorvel::text {

std::string_view mid(std::string_view reply, int position, int count)
{
    if (position < 1 || count < 1 || static_cast<std::size_t>(position) > reply.size()) return {};
    return reply.substr(static_cast<std::size_t>(position) - 1, static_cast<std::size_t>(count));
}

std::string_view left(std::string_view reply, int count) { return mid(reply, 1, count); }

std::string_view trimBlanks(std::string_view text)
{
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool echoes(std::string_view frame, std::string_view reply, int count)
{
    const auto length = static_cast<std::size_t>(std::max(count, 0));
    return frame.size() >= length && reply.size() >= length && left(frame, count) == left(reply, count);
}

std::string withLineEnd(std::string_view command) { return std::string(command) + "\r\n"; }

} // namespace quorvel::text
