#include "autoread/frame.h"

#include "text/reply.h"

namespace quorvel::autoread {

std::string commandFrame(std::string_view addressDigits, std::string_view command)
{
    return text::withLineEnd(":" + std::string(addressDigits) + std::string(command) + "FF");
}

} // namespace quorvel::autoread
