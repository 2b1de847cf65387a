#include "ctl/exchanges.h"

#include "ctl/console.h"
#include "protocol/answer.h"

namespace quorvel::ctl {

std::optional<link::Exchange> ask(Console& console, link::Transaction transaction)
{
    transaction.drains = true;
    auto exchange = console.module1().transact(transaction);
    if (exchange.complete()) return exchange;
    failed(console, protocol::kCommError, exchange);
    return std::nullopt;
}

bool order(Console& console, const link::Transaction& transaction)
{
    const auto exchange = ask(console, transaction);
    if (!exchange) return false;
    if (link::isConfirmed(*exchange)) {
        console.tell(protocol::kSetOk);
        return true;
    }
    failed(console, protocol::kSetFailed, *exchange);
    return false;
}

void failed(Console& console, const char* text, const link::Exchange& exchange)
{
    const auto words = QString::fromUtf8(text);
    // why the port vanished has been reported already
    if (!console.module1().port().PortOpen()) return console.tell(words);
    console.fail(failureOf(exchange), words + u' ' + protocol::whyFailed(exchange));
}

} // namespace quorvel::ctl
