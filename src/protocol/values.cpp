#include "protocol/values.h"

#include "link/address.h"
#include "link/module1.h"
#include "protocol/command.h"
#include "text/number.h"

namespace quorvel::protocol {

namespace {

constexpr std::size_t kValuesHead = 7; // address and command digits

} // namespace

link::Transaction xyQuery(std::string_view addressDigits)
{
    return transaction(CommandId::ReadXY, addressDigits);
}

link::Transaction zQuery(std::string_view addressDigits)
{
    return transaction(CommandId::ReadZ, addressDigits);
}

link::Transaction zQueryByCharacters(std::string_view addressDigits)
{
    auto query = zQuery(addressDigits);
    query.reply = {.until = link::ReplyRule::Until::Count, .count = kValuesReplyLength};
    query.drains = false;
    return query;
}

std::optional<bool> measuresZ(const link::Exchange& asked)
{
    if (asked.outcome == link::Outcome::Silent) return false;
    const auto asLong = asked.transaction.frame.substr(0, kValuesHead);
    const bool told = asked.reply.starts_with(asLong) && text::isNumber(firstValue(asked.reply)) &&
                      text::isNumber(secondValue(asked.reply));
    return told ? std::optional(true) : std::nullopt;
}

bool isValuesReply(std::string_view reply) { return reply.size() == kValuesReplyLength; }

std::string firstValue(std::string_view reply) { return std::string(field(CommandId::ReadXY, 0, reply)); }

std::string secondValue(std::string_view reply) { return std::string(field(CommandId::ReadXY, 1, reply)); }

std::string xyText(std::string_view reply)
{
    if (!isValuesReply(reply)) return std::string(kReadingFailed);
    return "  X: " + firstValue(reply) + "  Y: " + secondValue(reply) + "  ";
}

std::string zText(std::string_view reply, bool userEdition)
{
    if (userEdition) return "Z: " + firstValue(reply);
    return "Z1: " + firstValue(reply) + "  Z2: " + secondValue(reply) + "  ";
}

std::string ReadSensorValues(link::Module1& module1, int address, const link::Bench& bench)
{
    const auto digits = link::AddressToHex(address);
    const auto reply = module1.transact(xyQuery(digits)).reply;
    auto line = xyText(reply);
    if (isValuesReply(reply) && bench.isThreeDirection()) {
        module1.WaitForInput(kPauseBeforeZ, 0);
        line += zText(module1.transact(zQuery(digits)).reply, bench.isUserEdition());
    }
    module1.settle(kPauseAfterValues);
    return line;
}

} // namespace quorvel::protocol
