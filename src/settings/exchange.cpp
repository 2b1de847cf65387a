#include "settings/exchange.h"

#include "link/bytes.h"
#include "link/module1.h"
#include "text/reply.h"

namespace quorvel::settings {

namespace {

constexpr int kHeadLength = 5; // ":", two address digits, two command digits

} // namespace

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

bool answers(const Exchange& exchange, std::string_view reply)
{
    if (exchange.ignoresBlanks) reply = text::trimBlanks(reply);
    return text::echoes(exchange.frame, reply, kHeadLength) && reply.ends_with("\r\n");
}

std::optional<bool> flagAt(std::string_view reply, int position)
{
    const auto state = text::mid(reply, position, 2);
    if (state == "01") return true;
    if (state == "00") return false;
    return std::nullopt;
}

QString whyFailed(const Exchange& exchange, std::string_view reply)
{
    const auto arrived = static_cast<int>(reply.size());
    if (arrived == 0) return QStringLiteral("The readout did not answer.");
    if (arrived < exchange.replyLength) {
        return QStringLiteral("Only %1 of %2 characters of the answer arrived.")
            .arg(arrived)
            .arg(exchange.replyLength);
    }
    return QStringLiteral("The readout answered \"%1\" to \"%2\".")
        .arg(link::shown(inOneLine(reply)), link::shown(inOneLine(exchange.frame)));
}

QString whyFailed(const Exchange& exchange, std::string_view reply, const link::MSComm& port)
{
    if (port.PortOpen()) return whyFailed(exchange, reply);
    return port.lostReason().isEmpty() ? QStringLiteral("The port is closed.") : port.lostReason();
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
