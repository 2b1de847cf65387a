#include "protocol/feature.h"

#include "protocol/answer.h"
#include "protocol/command.h"

namespace quorvel::protocol {

link::Transaction featureSet(std::string_view addressDigits, bool on)
{
    return transaction(CommandId::SetFeature, addressDigits, on ? "01" : "00");
}

link::Transaction featureQuery(std::string_view addressDigits)
{
    return transaction(CommandId::QueryFeature, addressDigits);
}

bool featureIsOn(std::string_view reply) { return featureStateOf(reply) != false; }

std::optional<bool> featureStateOf(std::string_view reply)
{
    return flagIn(field(CommandId::QueryFeature, 0, reply));
}

} // namespace quorvel::protocol
