#include "autoread/ring_state.h"

#include "protocol/answer.h"
#include "protocol/readout_clock.h"
#include "protocol/values.h"
#include "text/duration.h"
#include "text/number.h"

#include <algorithm>
#include <vector>

namespace quorvel::autoread {

using namespace protocol;

namespace {

constexpr int kSixty = 60; // seconds of a minute, minutes of an hour
constexpr int kZQuestions = 2;
constexpr int kAgreeing = 2; // replies

/// True when asking again is in vain.
bool isOver(const link::Exchange& asked)
{
    return asked.outcome == link::Outcome::PortLost || asked.outcome == link::Outcome::Abandoned;
}

/// Sends a query until a reply fits, at most `retries` times again.
link::Exchange askFor(link::Module1& module1, const link::Transaction& query, int retries,
                      bool (*isPlain)(std::string_view))
{
    auto exchange = module1.transact(query);
    for (int again = 0;
         again < retries && !(exchange.complete() && isPlain(exchange.reply)) &&
         exchange.outcome != link::Outcome::PortLost && exchange.outcome != link::Outcome::Abandoned;
         ++again) {
        exchange = module1.transact(query);
    }
    return exchange;
}

jet::Failure notPointers(const link::Exchange& asked)
{
    if (!asked.complete()) return {"Comm Error " + whyFailed(asked).toStdString()};
    return {"The answer to the query for stored records could not be read: " + printable(asked.reply)};
}

} // namespace

std::string text(const ClockReading& clock)
{
    constexpr qint64 kSame = 2; // the answer takes a moment, and both clocks count whole seconds
    const auto words = clock.readout.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toStdString();
    const auto ahead = clock.ahead();
    if (qAbs(ahead) <= kSame) return words + ", as the PC";
    return words + ", " + text::duration(static_cast<double>(qAbs(ahead))) +
           (ahead > 0 ? " ahead of the PC" : " behind the PC");
}

jet::Result<RingPointers> askPointers(link::Module1& module1, const std::string& addressDigits,
                                      const Asking& asking)
{
    const auto query = pointersQuery(addressDigits);
    std::vector<RingPointers> seen;
    int bad = 0;
    while (static_cast<int>(seen.size()) <= kAgreeing + asking.retries) {
        const auto asked = module1.transact(query);
        if (!asked.complete() || !isPlainPointersReply(asked.reply) || !link::isAnswered(asked)) {
            if (isOver(asked) || ++bad > asking.retries || asking.isStopped()) return notPointers(asked);
            continue;
        }
        const auto pointers = readPointers(asked.reply);
        const auto why = whyNotFetchable(pointers);
        if (!pointers.isEmpty() && !why.empty()) return jet::Failure{why};
        if (std::ranges::find(seen, pointers) != seen.end()) return pointers;
        seen.push_back(pointers);
    }
    return jet::Failure{
        "The readout answers the query for stored records differently each time. Check the line, then try "
        "again."};
}

bool askHasZ(link::Module1& module1, const std::string& addressDigits)
{
    const auto query = zQuery(addressDigits);
    for (int questions = 0; questions < kZQuestions; ++questions) {
        const auto asked = module1.transact(query);
        if (measuresZ(asked).value_or(false)) return true;
        if (isOver(asked)) break;
    }
    return false;
}

std::optional<int> intervalSeconds(const std::optional<AutoMode>& mode)
{
    if (!mode || !mode->isInterval()) return std::nullopt;
    const int seconds = (mode->values[0] * kSixty + mode->values[1]) * kSixty + mode->values[2];
    return seconds > 0 ? std::optional(seconds) : std::nullopt;
}

std::optional<AutoMode> askMode(link::Module1& module1, const std::string& addressDigits)
{
    const auto asked = askFor(module1, modeQuery(addressDigits), 1, isPlainModeReply);
    if (!asked.complete() || !isPlainModeReply(asked.reply)) return std::nullopt;
    return readMode(asked.reply);
}

std::optional<ClockReading> askClock(link::Module1& module1, const std::string& addressDigits)
{
    const auto isClock = [](std::string_view reply) { return clockOf(reply).has_value(); };
    const auto asked = askFor(module1, clockQuery(addressDigits), 1, isClock);
    const auto readout = asked.complete() ? clockOf(asked.reply) : std::nullopt;
    if (!readout) return std::nullopt;
    return ClockReading{*readout, module1.clock().now()};
}

jet::Result<RingState> askRing(RecordReader& reader)
{
    auto& module1 = reader.module1();
    const auto& digits = reader.addressDigits();
    const auto pointers = askPointers(module1, digits, reader.asking());
    if (!pointers) return pointers.failure();
    RingState state{.pointers = *pointers};
    if (state.pointers.isEmpty()) {
        state.threeDirection = askHasZ(module1, digits);
    } else {
        const auto held = risingSpan(state.pointers);
        const auto first = reader.ask(held.indexOf(held.first));
        if (first.kind != Answer::Kind::Record) return jet::Failure{first.words};
        const auto last = reader.ask(held.indexOf(held.end - 1));
        if (last.kind != Answer::Kind::Record) return jet::Failure{last.words};
        state.first = first.record;
        state.last = last.record;
        state.threeDirection = reader.layout() == kThreeDirections;
    }
    state.mode = askMode(module1, digits);
    state.clock = askClock(module1, digits);
    return state;
}

} // namespace quorvel::autoread
