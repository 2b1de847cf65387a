#include "sim/faults.h"

#include "sim/noise.h"
#include "sim/text.h"
#include "sim/wire.h"

#include <algorithm>
#include <charconv>
#include <numeric>

namespace quorvelsim {

/// What an answer is spoiled with.
struct FaultContext {
    const Asked& asked;
    const Command* command; ///< null for the search
    double amount;
    std::uint64_t seed;
};

struct FaultKind {
    std::string_view name;
    double amount; ///< when none is given
    void (*spoil)(Answer&, const FaultContext&);
};

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr double kAutomatic = -1;
constexpr std::uint64_t kGarbledStream = 7;
constexpr std::uint64_t kBitStream = 8; // and the one behind it

std::size_t whole(double amount) { return static_cast<std::size_t>(std::max(amount, 0.0)); }

void overwrite(std::string& text, std::size_t position, std::string_view with)
{
    for (std::size_t i = 0; i < with.size() && position >= 1 && position - 1 + i < text.size(); ++i)
        text[position - 1 + i] = with[i];
}

void silent(Answer& answer, const FaultContext& /*context*/) { answer.text.clear(); }

void cutShort(Answer& answer, const FaultContext& context)
{
    const auto all = answer.text.size();
    answer.text.resize(context.amount < 0 ? all - std::min<std::size_t>(all, 1)
                                          : std::min(all, whole(context.amount)));
}

void lengthen(Answer& answer, const FaultContext& context) { answer.text.append(whole(context.amount), '0'); }

void delay(Answer& answer, const FaultContext& context)
{
    answer.lateSeconds += std::max(context.amount, 0.0);
}

/// Behind the address up to the line end.
void garble(Answer& answer, const FaultContext& context)
{
    const auto end = answer.text.size() - std::min(answer.text.size(), kLineEnd.size());
    for (std::size_t i = 3; i < end; ++i)
        answer.text[i] = noiseByte(context.seed, kGarbledStream, i);
}

/// Where a wrong echo shows by default: the first digit of the number that was set, the last digit of a
/// two-character field; in the answer to a query the last command digit, in a search answer the address.
std::size_t echoPosition(const Answer& answer, const FaultContext& context)
{
    if (context.command == nullptr) return 3;
    if (context.command->set == nullptr || context.command->numberAt == 0)
        return 3 + context.asked.code.size();
    auto position = context.command->numberAt;
    if (context.command->numberWidth == 2) return position + 1;
    const auto first = mid(answer.text, position, 1);
    return first == "+" || first == "-" ? position + 1 : position;
}

void wrongEcho(Answer& answer, const FaultContext& context)
{
    const auto position = context.amount < 0 ? echoPosition(answer, context) : whole(context.amount);
    if (position < 1 || position > answer.text.size()) return;
    auto& digit = answer.text[position - 1];
    if (digit < '0' || digit > '9') {
        digit = '?';
    } else {
        digit = digit == '9' ? '0' : static_cast<char>(digit + 1);
    }
}

void hangUp(Answer& answer, const FaultContext& context)
{
    answer.text.resize(
        std::min(answer.text.size(), context.amount < 0 ? answer.text.size() / 2 : whole(context.amount)));
    answer.hangUp = true;
}

void wrongCount(Answer& answer, const FaultContext& context)
{
    if (context.command == nullptr || context.command->countAt == 0) return;
    const auto at = context.command->countAt;
    const auto count =
        hexByte(mid(answer.text, at, 2)).value_or(0) * 256 + hexByte(mid(answer.text, at + 2, 2)).value_or(0);
    const auto wrong = context.amount < 0 ? count + 1 : static_cast<int>(context.amount);
    overwrite(answer.text, at, twoHex(wrong / 256) + twoHex(wrong % 256));
}

void dropLineFeed(Answer& answer, const FaultContext& /*context*/)
{
    if (answer.text.ends_with('\n')) answer.text.pop_back();
}

void badDate(Answer& answer, const FaultContext& context)
{
    if (context.command != nullptr) overwrite(answer.text, context.command->dateAt, "241332");
}

void badNumber(Answer& answer, const FaultContext& context)
{
    if (context.command == nullptr) return;
    const auto width = std::min<std::size_t>(context.command->numberWidth, 8);
    overwrite(answer.text, context.command->numberAt, std::string_view("XYZABCDE").substr(0, width));
}

void twice(Answer& answer, const FaultContext& /*context*/) { answer.text += std::string(answer.text); }

void noise(Answer& answer, const FaultContext& context)
{
    answer.text.insert(0, std::string(whole(context.amount), '~'));
}

/// Each character at most once, so that no bit is turned back.
void flipBits(Answer& answer, const FaultContext& context)
{
    std::vector<std::size_t> places(answer.text.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    for (std::size_t i = 0; i < whole(context.amount) && !places.empty(); ++i) {
        const auto chosen = static_cast<std::size_t>(static_cast<double>(places.size()) *
                                                     uniform(context.seed, kBitStream, i));
        auto& character = answer.text[places[chosen]];
        character = withOneBitFlipped(character, context.seed, kBitStream + 1, i);
        places.erase(places.begin() + static_cast<std::ptrdiff_t>(chosen));
    }
}

/// What the readout answers when the slot was read wrongly: a good answer, to another question.
void otherSlot(Answer& answer, const FaultContext& context)
{
    if (context.asked.code != kRecordCode) return;
    auto& readout = context.asked.readout;
    const auto slot = decimal(mid(answer.text, 6, 4)).value_or(0);
    const auto other =
        context.amount < 0 ? (slot + 1) % readout.ring.capacity() : static_cast<int>(context.amount);
    const auto frame =
        ":" + twoHex(context.asked.address) + std::string(kRecordCode) + digits(other, 4) + "FF";
    const auto request = parseCommand(frame);
    if (request) answer.text = quorvelsim::answer(readout, *request).value_or("");
}

void takeMeanwhile(Answer& /*answer*/, const FaultContext& context)
{
    for (std::size_t i = 0; i < whole(context.amount); ++i)
        context.asked.readout.takeRecord(context.asked.now);
}

constexpr FaultKind kKinds[] = {
    {"silent", 0, silent},
    {"short", kAutomatic, cutShort},
    {"long", 1, lengthen},
    {"late", 3, delay},
    {"garbled", 0, garble},
    {"echo", kAutomatic, wrongEcho},
    {"hangup", kAutomatic, hangUp},
    {"count", kAutomatic, wrongCount},
    {"nolf", 0, dropLineFeed},
    {"baddate", 0, badDate},
    {"badnumber", 0, badNumber},
    {"twice", 0, twice},
    {"noise", 3, noise},
    {"bit", 1, flipBits},
    {"slot", kAutomatic, otherSlot},
    {"take", 1, takeMeanwhile},
};

/// Cuts `text` at the first `mark`; what follows it is returned, nothing when it does not occur.
std::optional<std::string_view> cutAt(std::string_view& text, char mark)
{
    const auto at = text.find(mark);
    if (at == std::string_view::npos) return std::nullopt;
    const auto rest = text.substr(at + 1);
    text = text.substr(0, at);
    return rest;
}

std::string kindNames()
{
    std::string names;
    for (const auto& kind : kKinds)
        names += (names.empty() ? "" : ", ") + std::string(kind.name);
    return names;
}

std::string readKind(std::string_view text, Fault& fault)
{
    const auto amount = cutAt(text, '=');
    for (const auto& kind : kKinds)
        if (kind.name == text) fault.kind = &kind;
    if (fault.kind == nullptr)
        return "there is no fault \"" + std::string(text) + "\"; there are " + kindNames();
    fault.amount = fault.kind->amount;
    if (!amount) return {};
    const auto* end = amount->data() + amount->size();
    const auto result = std::from_chars(amount->data(), end, fault.amount, std::chars_format::fixed);
    const bool good =
        result.ec == std::errc{} && result.ptr == end && fault.amount >= 0 && fault.amount <= 65535;
    return good ? std::string{}
                : "the amount \"" + std::string(*amount) + "\" is not a number from 0 to 65535";
}

std::string readTimes(std::string_view text, Fault& fault)
{
    const auto skip = cutAt(text, '+');
    const auto count = decimal(text);
    if (count) fault.left = *count;
    if (skip) fault.skip = decimal(*skip).value_or(-1);
    const bool good = (count || (text.empty() && skip)) && fault.skip >= 0;
    return good ? std::string{} : "after \":\" stands how often, and \"+\" how many pass before, such as 1+5";
}

std::string readTarget(std::string_view text, Fault& fault)
{
    if (const auto code = cutAt(text, '/')) {
        fault.address = decimal(text).value_or(0);
        if (fault.address < 1 || fault.address > 249) return "the address before \"/\" is not 1 to 249";
        text = *code;
    }
    fault.code = text;
    const bool good = text == "*" || (!text.empty() && beginsACommand(text));
    return good ? std::string{} : "\"" + fault.code + "\" is no command; give its digits, such as 2101, or *";
}

bool concerns(const Fault& fault, int address, std::string_view code)
{
    return fault.left != 0 && (fault.address == 0 || fault.address == address) &&
           (fault.code == "*" || code.starts_with(fault.code));
}

} // namespace

std::string Faults::add(std::string_view text)
{
    Fault fault;
    auto kind = text;
    const auto rest = cutAt(kind, '@');
    if (!rest) return "a fault is written KIND@COMMAND, such as silent@2101";
    auto target = *rest;
    const auto times = cutAt(target, ':');
    std::string reason = readKind(kind, fault);
    if (reason.empty()) reason = readTarget(target, fault);
    if (reason.empty() && times) reason = readTimes(*times, fault);
    if (reason.empty()) faults_.push_back(fault);
    return reason;
}

std::string_view Faults::apply(Answer& answer, const Asked& asked)
{
    for (auto& fault : faults_) {
        if (!concerns(fault, asked.address, asked.code)) continue;
        if (fault.skip > 0) {
            --fault.skip;
            continue;
        }
        if (fault.left > 0) --fault.left;
        const FaultContext context{asked, findCommand(asked.code), fault.amount, seed_ + applied_++};
        fault.kind->spoil(answer, context);
        return fault.kind->name;
    }
    return {};
}

} // namespace quorvelsim
