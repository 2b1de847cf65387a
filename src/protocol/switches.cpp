#include "protocol/switches.h"

#include "protocol/answer.h"

namespace quorvel::protocol {

link::Transaction switchSet(const SwitchRow& row, std::string_view addressDigits, bool on)
{
    return transaction(row.set, addressDigits, on ? "01" : "00");
}

link::Transaction switchQuery(const SwitchRow& row, std::string_view addressDigits)
{
    return transaction(row.query, addressDigits);
}

std::optional<bool> switchStateOf(std::string_view reply)
{
    return flagIn(field(CommandId::QuerySwap, 0, reply));
}

} // namespace quorvel::protocol
