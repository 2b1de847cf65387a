#include "app/ctl/exchanges.h"

#include "app/ctl/console.h"
#include "main/messages.h"

namespace quorvel::ctl {

bool ask(Console& console, settings::Exchange exchange)
{
    exchange.drains = true;
    if (settings::perform(console.module1(), exchange)) return true;
    failed(console, kCommError, exchange);
    return false;
}

bool order(Console& console, const settings::Exchange& exchange)
{
    if (!ask(console, exchange)) return false;
    if (settings::confirms(exchange, console.module1().ReplyText())) {
        console.tell(settings::kSetOk);
        return true;
    }
    failed(console, settings::kSetFailed, exchange);
    return false;
}

void failed(Console& console, const char* text, const settings::Exchange& exchange)
{
    auto words = QString::fromUtf8(text);
    // A port that vanished has been told already.
    if (console.module1().port().PortOpen())
        words += u' ' + settings::whyFailed(exchange, console.module1().ReplyText());
    console.fail(kNotAnswered, words);
}

} // namespace quorvel::ctl
