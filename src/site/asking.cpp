#include "site/asking.h"

#include "link/address.h"
#include "link/bytes.h"
#include "link/module1.h"
#include "protocol/meaning.h"
#include "protocol/readout_clock.h"
#include "protocol/values.h"
#include "text/duration.h"

#include <cmath>

namespace quorvel::site {

namespace {

constexpr double kMsInS = 1000;
constexpr double kHalfSecond = 0.5; // what a clock of whole seconds is behind on average

} // namespace

ClockTold askClock(link::Module1& module1, int address)
{
    const auto exchange = module1.transact(protocol::clockQuery(link::AddressToHex(address)));
    if (!exchange.complete() || !link::isAnswered(exchange))
        return {QString::fromStdString(protocol::outcomeOf(exchange)), std::nullopt};
    const auto told = protocol::clockOf(exchange.reply);
    if (!told) return {QStringLiteral("no date and time"), std::nullopt};
    // It tells the second in which the question reached it.
    const auto asked = exchange.begun.addMSecs(std::llround(exchange.lastOut.value_or(0) * kMsInS));
    const auto seconds = std::round(static_cast<double>(asked.msecsTo(*told)) / kMsInS + kHalfSecond);
    if (seconds == 0) return {QStringLiteral("right"), 0.0};
    const auto size = link::shown(text::duration(std::abs(seconds)));
    return {(seconds < 0 ? u'-' : u'+') + size, seconds};
}

link::InstrumentType askType(link::Module1& module1, int address, link::InstrumentType otherwise)
{
    for (int tries = 2; tries > 0; --tries) {
        const auto measures =
            protocol::measuresZ(module1.transact(protocol::zQuery(link::AddressToHex(address))));
        if (measures && *measures) return link::TypeC;
        if (!measures) break; // something spoke, but not as a readout with Z
    }
    return otherwise;
}

} // namespace quorvel::site
