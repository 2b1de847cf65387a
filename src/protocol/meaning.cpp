#include "protocol/meaning.h"

#include "text/number.h"
#include "text/reply.h"

#include <iterator>

namespace quorvel::protocol {

namespace {

constexpr int kAddressAt = 2;
constexpr int kAddressDigits = 2;
constexpr std::size_t kDigitsAt = 3; // from 0 on
constexpr std::string_view kFrameEnd = "FF\r\n";
constexpr std::size_t kLongestShown = 24; // of a parameter in words

constexpr std::string_view kVerdictNames[] = {"complete",  "not the answer", "silent", "short",
                                              "port lost", "abandoned",      "refused"};
constexpr std::string_view kKindNames[] = {"search", "query", "set", "delete"};

} // namespace

// Digits of two, four and six places share their beginnings ("78" is none, "7805" is): the longest that fits counts.
const Command* commandOf(std::string_view frame)
{
    if (frame.size() < kDigitsAt || frame.front() != ':') return nullptr;
    const auto rest = frame.substr(kDigitsAt);
    const Command* found = nullptr;
    for (const auto& row : commands()) {
        if (rest.starts_with(row.digits) && (!found || row.digits.size() > found->digits.size()))
            found = &row;
    }
    return found;
}

int addressOf(std::string_view frame)
{
    const auto digits = text::mid(frame, kAddressAt, kAddressDigits);
    return frame.starts_with(':') && digits.size() == kAddressDigits ? text::hexNumber(digits) : -1;
}

std::string_view parameterOf(std::string_view frame)
{
    const auto* row = commandOf(frame);
    if (!row || !frame.ends_with(kFrameEnd)) return {};
    frame.remove_prefix(kDigitsAt + row->digits.size());
    return frame.size() > kFrameEnd.size() ? frame.substr(0, frame.size() - kFrameEnd.size())
                                           : std::string_view();
}

std::string meaningOf(std::string_view frame)
{
    if (frame.empty()) return "Listen";
    const auto* row = commandOf(frame);
    if (!row) return "Unknown command";
    std::string words(row->name);
    const auto parameter = parameterOf(frame);
    if (parameter.empty()) return words;
    words.append(row->kind == link::Kind::Set ? " to " : " ").append(parameter.substr(0, kLongestShown));
    return parameter.size() > kLongestShown ? words + " ..." : words;
}

Verdict verdictOf(const link::Exchange& exchange)
{
    switch (exchange.outcome) {
    case link::Outcome::Silent:
        return Verdict::Silent;
    case link::Outcome::Short:
        return Verdict::Short;
    case link::Outcome::PortLost:
        return Verdict::PortLost;
    case link::Outcome::Abandoned:
        return Verdict::Abandoned;
    case link::Outcome::Refused:
        return Verdict::Refused;
    case link::Outcome::Complete:
        break;
    }
    // Every readout answers the search in its own way.
    if (exchange.transaction.kind == link::Kind::Search) return Verdict::Complete;
    return link::isAnswered(exchange) ? Verdict::Complete : Verdict::NotTheAnswer;
}

std::string outcomeOf(const link::Exchange& exchange)
{
    const auto verdict = verdictOf(exchange);
    auto words = std::string(nameOf(verdict));
    if (verdict != Verdict::Short) return words;
    words += " " + std::to_string(exchange.reply.size());
    const int awaited = exchange.transaction.reply.count;
    const bool known = awaited > 0 && exchange.transaction.reply.until != link::ReplyRule::Until::LineFeed;
    return known ? words + " of " + std::to_string(awaited) : words;
}

std::string_view nameOf(Verdict verdict) { return kVerdictNames[static_cast<std::size_t>(verdict)]; }

std::string_view nameOf(link::Kind kind) { return kKindNames[static_cast<std::size_t>(kind)]; }

} // namespace quorvel::protocol
