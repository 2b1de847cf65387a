#include "ctl/failure.h"

#include <iterator>

namespace quorvel::ctl {

namespace {

constexpr bool inOrderOfFailures()
{
    for (std::size_t i = 0; i < std::size(kFailures); ++i) {
        if (kFailures[i].failure != static_cast<Failure>(i)) return false;
    }
    return true;
}
static_assert(inOrderOfFailures());

} // namespace

const FailureRow& rowOf(Failure failure) { return kFailures[static_cast<std::size_t>(failure)]; }

Failure failureOf(const link::Exchange& exchange)
{
    using link::Outcome;
    switch (exchange.outcome) {
    case Outcome::PortLost:
        return Failure::PortLost;
    case Outcome::Abandoned:
        return Failure::Ended;
    case Outcome::Refused:
        return Failure::ReadOnly;
    case Outcome::Silent:
        return Failure::Silent;
    case Outcome::Short:
        return Failure::Short;
    case Outcome::Complete:
        break;
    }
    if (exchange.reply.empty()) return Failure::Silent; // complete: the time was over
    const auto kind = exchange.transaction.kind;
    return kind == link::Kind::Set || kind == link::Kind::Delete ? Failure::Unconfirmed : Failure::Garbled;
}

bool isWell(const link::Exchange& exchange) { return exchange.complete() && link::isAnswered(exchange); }

Failure failureOf(line::Fault fault)
{
    using line::Fault;
    switch (fault) {
    case Fault::PortClosed:
        return Failure::PortNotOpened;
    case Fault::PortLost:
        return Failure::PortLost;
    case Fault::Stopped:
        return Failure::Ended;
    case Fault::NotAnAddress:
        return Failure::Usage;
    case Fault::EchoOnly:
    case Fault::NothingAnswers:
    case Fault::ReadoutSilent:
    case Fault::SearchOnly:
    case Fault::CommandSilent:
    case Fault::SearchSilent:
    case Fault::NowAndThen:
    case Fault::Late:
        return Failure::Silent;
    case Fault::BreaksOff:
    case Fault::ShortReading:
        return Failure::Short;
    case Fault::Echo:
    case Fault::Noise:
    case Fault::SearchWrong:
    case Fault::TooLong:
    case Fault::Twice:
    case Fault::NoiseBefore:
    case Fault::Damaged:
    case Fault::OtherCommand:
    case Fault::OtherAddress:
    case Fault::NoValue:
        return Failure::Garbled;
    case Fault::None:
    case Fault::LineGood:
    case Fault::AnotherReadout:
    case Fault::HasZ:
    case Fault::LacksZ:
        break;
    }
    return Failure::Failed;
}

} // namespace quorvel::ctl
