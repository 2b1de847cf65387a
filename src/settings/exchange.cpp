#include "settings/exchange.h"

#include "link/module1.h"
#include "text/reply.h"

namespace quorvel::settings {

std::string frameOf(std::string_view addressDigits, std::string_view command)
{
    return text::withLineEnd(":" + std::string(addressDigits) + std::string(command));
}

bool perform(link::Module1& module1, const Exchange& exchange)
{
    using Drain = link::Module1::Drain;
    return module1.transact(exchange.frame, static_cast<std::uint16_t>(exchange.replyLength),
                            exchange.drains ? Drain::Yes : Drain::No);
}

bool confirms(const Exchange& exchange, std::string_view reply)
{
    if (exchange.ignoresBlanks) reply = text::trimBlanks(reply);
    return text::echoes(exchange.frame, reply, exchange.echoLength);
}

std::string whyFailed(const Exchange& exchange, std::string_view reply)
{
    const auto arrived = static_cast<int>(reply.size());
    if (arrived == 0) return "The readout did not answer.";
    if (arrived < exchange.replyLength) {
        return "Only " + std::to_string(arrived) + " of " + std::to_string(exchange.replyLength) +
               " characters of the answer arrived.";
    }
    return "The readout answered \"" + inOneLine(reply) + "\" to \"" + inOneLine(exchange.frame) + "\".";
}

std::string inOneLine(std::string_view reply)
{
    std::string line(reply.substr(0, reply.find_last_not_of("\r\n") + 1));
    for (auto& character : line) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < ' ' || (byte >= 0x7F && byte < 0xA0)) character = '?';
    }
    return line;
}

} // namespace quorvel::settings
