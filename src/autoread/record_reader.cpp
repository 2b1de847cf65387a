#include "autoread/record_reader.h"

#include "autoread/ring_state.h"
#include "protocol/answer.h"
#include "text/number.h"

#include <algorithm>
#include <utility>

namespace quorvel::autoread {

using namespace protocol;

/// The questions for one record, up to the answer.
struct RecordReader::Round {
    int slot = 0;
    Answer answer{};
    bool done = false;
    std::vector<std::string> good{};       ///< replies that fit and can be read
    std::vector<std::string> unreadable{}; ///< replies that fit, with a field that cannot be read
    std::vector<std::string> odd{};        ///< replies that do not fit
    Answer oddAnswer{};
};

namespace {

/// A readout may number its slots otherwise or end its replies otherwise; it never answers for another. When it says
/// the same each time, that is how it is.
bool canBeItsWay(const std::vector<Misfit>& misfits)
{
    return std::ranges::all_of(
        misfits, [](Misfit misfit) { return misfit == Misfit::Slot || misfit == Misfit::EndMark; });
}

bool holds(const std::vector<std::string>& replies, const std::string& reply)
{
    return std::ranges::find(replies, reply) != replies.end();
}

std::string recordName(int slot) { return "Record " + text::format(slot, "0000"); }

Answer read(const std::string& frame, const std::string& reply, const RecordLayout& layout)
{
    auto [record, unreadable] = readRecord(reply, layout);
    Answer answer{.kind = Answer::Kind::Record, .record = record, .unreadable = std::move(unreadable)};
    for (const auto misfit : misfitsOf(frame, reply, layout)) {
        answer.misfits.push_back(misfitText(misfit, reply));
    }
    answer.outcome = link::Outcome::Complete;
    return answer;
}

/// A reply of two directions where three are awaited is whole, but not of the type that was chosen.
std::string whyIncomplete(const link::Exchange& exchange)
{
    auto words = protocol::whyFailed(exchange).toStdString();
    const bool hasNoZ =
        layoutOfReply(exchange.reply) == kTwoDirections && exchange.outcome == link::Outcome::Short;
    if (hasNoZ) words += " That is a whole reply without Z: the readout is not of type C.";
    return words;
}

} // namespace

RecordReader::RecordReader(link::Module1& module1, std::string addressDigits,
                           const std::optional<RecordLayout>& layout, const Asking& asking)
    : module1_(module1), addressDigits_(std::move(addressDigits)), layout_(layout), asking_(asking)
{}

link::Exchange RecordReader::exchange(int slot)
{
    auto exchange = module1_.transact(layout_ ? recordFetch(addressDigits_, slot, *layout_)
                                              : recordFetchOfAnyLayout(addressDigits_, slot));
    ++counts_.questions;
    counts_.noise += exchange.discarded.size();
    return exchange;
}

const Answer& RecordReader::askAhead(int slot)
{
    auto answer = ask(slot);
    return ahead_.emplace(slot, std::move(answer)).second;
}

Answer RecordReader::ask(int slot)
{
    auto ahead = std::exchange(ahead_, std::nullopt);
    if (ahead && ahead->first == slot) return std::move(ahead->second);
    Round round{.slot = slot};
    const bool twice = asking_.verify && !asking_.asPrescribed;
    const int needed = twice ? 2 : 1;
    const int most = needed + (asking_.asPrescribed ? 0 : std::max(0, asking_.retries));
    for (int questions = 0; questions < most && !round.done; ++questions) {
        if (questions >= needed) ++counts_.askedAgain;
        judge(exchange(slot), round);
    }
    const bool insists = round.odd.size() > 1 && round.good.empty() && round.unreadable.empty() &&
                         std::ranges::count(round.odd, round.odd.front()) == std::ssize(round.odd);
    if (insists && round.oddAnswer.kind == Answer::Kind::Record) return std::move(round.oddAnswer);
    return std::move(round.answer);
}

void RecordReader::judge(const link::Exchange& exchange, Round& round)
{
    if (exchange.complete()) return judgeWhole(exchange, round);
    ++counts_.incomplete;
    if (round.answer.kind == Answer::Kind::Record) return;
    round.answer = {.kind = Answer::Kind::Incomplete,
                    .outcome = exchange.outcome,
                    .words = recordName(round.slot) + " did not come. " + whyIncomplete(exchange)};
    const bool inVain = exchange.outcome != link::Outcome::Silent && exchange.outcome != link::Outcome::Short;
    round.done = inVain || asking_.isStopped();
}

void RecordReader::judgeWhole(const link::Exchange& exchange, Round& round)
{
    const auto& reply = exchange.reply;
    if (!layout_) layout_ = layoutOfReply(reply);
    if (!layout_) layout_ = layoutOf(askHasZ(module1_, addressDigits_));
    const auto misfits = misfitsOf(exchange.transaction.frame, reply, *layout_);
    const bool fits = misfits.empty() && static_cast<int>(reply.size()) == layout_->replyLength;
    auto answer = read(exchange.transaction.frame, reply, *layout_);
    if (!fits) ++counts_.misfits;
    if (asking_.asPrescribed) {
        round.answer = std::move(answer);
        round.done = true;
    } else if (fits) {
        judgeFitting(reply, std::move(answer), round);
    } else {
        judgeOdd(reply, canBeItsWay(misfits), std::move(answer), round);
    }
}

// Where nothing better comes, a reply that cannot be read is what the record is.
void RecordReader::judgeFitting(const std::string& reply, Answer answer, Round& round)
{
    const bool good = answer.unreadable.empty();
    auto& earlier = good ? round.good : round.unreadable;
    const bool again = holds(earlier, reply);
    if (good && !again && !earlier.empty()) ++counts_.disagreements;
    earlier.push_back(reply);
    round.done = again || (good && !asking_.verify);
    if (round.done || (!asking_.verify && round.good.empty())) {
        round.answer = std::move(answer);
    } else {
        round.answer = {.kind = Answer::Kind::Misfit,
                        .outcome = link::Outcome::Complete,
                        .words = recordName(round.slot) + " came differently each time."};
    }
}

void RecordReader::judgeOdd(const std::string& reply, bool mayBeItsWay, Answer answer, Round& round)
{
    round.odd.push_back(reply);
    const auto why = answer.misfits.empty()
                         ? "it has " + text::general(static_cast<int>(reply.size())) + " characters"
                         : answer.misfits.front();
    if (mayBeItsWay) round.oddAnswer = std::move(answer);
    if (round.answer.kind == Answer::Kind::Record) return;
    round.answer = {.kind = Answer::Kind::Misfit,
                    .outcome = link::Outcome::Complete,
                    .words = recordName(round.slot) +
                             " was asked for, but the reply is not its answer: " + why + "."};
}

} // namespace quorvel::autoread
