#include "protocol/answer.h"

#include "link/bytes.h"

namespace quorvel::protocol {

namespace {

QString lineShown(std::string_view text) { return link::shown(inOneLine(text)); }

QString whyEnded(const link::Exchange& exchange)
{
    using link::Outcome;
    switch (exchange.outcome) {
    case Outcome::PortLost:
        return exchange.lostReason.isEmpty() ? QStringLiteral("The port is closed.") : exchange.lostReason;
    case Outcome::Abandoned:
        return QStringLiteral("The program was closed.");
    case Outcome::Refused:
        return QStringLiteral("Read Only is on: nothing was sent.");
    case Outcome::Silent:
        return QStringLiteral("The readout did not answer.");
    case Outcome::Short:
        return QStringLiteral("Only %1 of %2 characters of the answer arrived.")
            .arg(exchange.reply.size())
            .arg(exchange.transaction.reply.count);
    case Outcome::Complete:
        break;
    }
    return QStringLiteral("The readout answered \"%1\" to \"%2\".")
        .arg(lineShown(exchange.reply), lineShown(exchange.transaction.frame));
}

} // namespace

std::optional<bool> flagIn(std::string_view field)
{
    if (field == "01") return true;
    if (field == "00") return false;
    return std::nullopt;
}

QString whyFailed(const link::Exchange& exchange)
{
    auto why = whyEnded(exchange);
    if (exchange.lost == 0) return why;
    return why + QStringLiteral(
                     " %1 characters came that nobody had asked for, and were lost. Look for what floods the "
                     "line.")
                     .arg(exchange.lost);
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

std::string printable(std::string_view received)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char character : received) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte < 0x7F) {
            text += character;
        } else {
            text.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
        }
    }
    return text;
}

} // namespace quorvel::protocol
