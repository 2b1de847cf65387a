#include "protocol/stitching.h"

#include "protocol/command.h"
#include "text/reply.h"

namespace quorvel::protocol {

link::Transaction locationQuery(std::string_view addressDigits)
{
    return transaction(CommandId::QueryStitching, addressDigits);
}

link::Transaction locationSet(std::string_view addressDigits, std::string_view typed)
{
    return transaction(CommandId::SetStitching, addressDigits, typed);
}

bool isLocation(std::string_view typed) { return text::trimBlanks(typed).size() == kLocationLength; }

std::string locationOf(std::string_view reply)
{
    return std::string(field(CommandId::QueryStitching, 0, reply));
}

} // namespace quorvel::protocol
