#include "line/conclusion.h"

#include "link/bytes.h"
#include "protocol/answer.h"

#include <algorithm>
#include <iterator>

namespace quorvel::line {

namespace {

using protocol::Shape;

/// What is said about a fault. In braces stands what Facts know.
struct FaultRow {
    Fault fault;
    std::string_view name;
    const char* what;
    const char* next;
    const char* unknown = "";
};

constexpr auto kReadoutOrLine = "Whether the readout or the line is to blame cannot be told from here.";

constexpr FaultRow kFaults[] = {
    {Fault::None, "no fault found", "{Readout} answers as it should.",
     "If it fails only now and then, watch Tools > Line Health, or have quorvelctl count with --stats.",
     "Stored records, pixels, settings and whatever changes a readout were not tried. Of an answer to the "
     "search only the address was looked at, and a digit that arrives as another digit is not noticed."},
    {Fault::LineGood, "line good", "Port, adapter and line are good: {heard} answered the search.",
     "Test again with the address of the readout in question: in its box, or with quorvelctl --address."},
    {Fault::PortClosed, "port closed", "{detail}", "Test again when the port is open."},
    {Fault::PortLost, "port lost", "The port vanished during the test. {detail}",
     "If it happens again, try another USB socket and another cable.",
     "Whether the plug, the cable, the adapter or its supply is to blame cannot be told from here."},
    {Fault::Stopped, "stopped", "The test was stopped before its end.",
     "Test again to the end, or go by the steps that were done."},
    {Fault::Echo, "adapter echo",
     "The adapter sends back what it sends (RS-485 echo). Each answer arrives behind the question and is not "
     "recognised.",
     "Switch the echo off at the adapter (a jumper, a switch or its settings), or take one without echo."},
    {Fault::EchoOnly, "echo only", "Only what is sent comes back, no answer.",
     "Switch the echo off at the adapter; then check the wires from it to the readouts, and their power.",
     "Whether the adapter echoes and no readout answers, or its lines for sending and receiving are joined, "
     "cannot be told from here."},
    {Fault::Noise, "noise", "Characters arrive although nothing was sent: {detail}.",
     "Look for another program or device that talks on this line, for loose or exchanged wires, and for a "
     "missing terminating resistor.",
     "Where they come from cannot be told from here."},
    {Fault::NotAnAddress, "not an address", "\"{detail}\" names no readout. Addresses are 1 to 249.",
     "Enter the readout's address. Those that answered the search: {heard}."},
    {Fault::NothingAnswers, "nothing answers",
     "No readout answers, neither to the search nor at its address.",
     "Check in this order: the power of the readouts; the cable from the adapter to them, A and B perhaps "
     "exchanged; whether this is the right port. Then ask each address: Tools > Find Readouts One by One, or "
     "quorvelctl search --each.",
     "Which of these it is cannot be told from here."},
    {Fault::ReadoutSilent, "readout silent",
     "{Readout} does not answer. {heard} answered the search, so port, adapter and line are good.",
     "Check whether the readout has one of these addresses; then its power and its cable.",
     "Whether a readout has this address at all cannot be told from here."},
    {Fault::SearchOnly, "answers the search only", "{Readout} answers the search, but nothing else.",
     "Switch the readout off and on again, then test again.",
     "Whether the readout is defective or another one answered in its place cannot be told from here."},
    {Fault::CommandSilent, "one command silent", "{Readout} answers, but not to \"{command}\".",
     "Switch the readout off and on again, then test again.",
     "Whether the readout does not know this command or is defective cannot be told from here."},
    {Fault::SearchSilent, "search unanswered", "{Readout} answers at its address, but not to the search.",
     "Work with its address as entered; Tools > Find Readouts One by One, or quorvelctl search --each, finds "
     "it, too.",
     "Why it leaves the search out cannot be told from here."},
    {Fault::SearchWrong, "search wrong",
     "The search names {heard}, but no readout answers there, while {readout} answers and is not named.",
     "Do not go by the search. Ask each address: Tools > Find Readouts One by One, or quorvelctl search "
     "--each.",
     "Whether the readouts or the line change the addresses cannot be told from here."},
    {Fault::Late, "late",
     "{Readout} answers {detail}, when the answer is no longer awaited. It then spoils the next command.",
     "Look for what delays: a device server or radio link on the way, or another program on the line.",
     "Whether the readout or the way to it is slow cannot be told from here."},
    {Fault::NowAndThen, "now and then",
     "{Readout} answers only now and then. \"{command}\" went wrong once ({detail}), and was answered when "
     "it was asked again.",
     "Check plugs, terminals and shield, and watch Tools > Line Health, or quorvelctl --stats watch, while "
     "somebody moves the cable.",
     kReadoutOrLine},
    {Fault::BreaksOff, "answer breaks off",
     "{Readout} answers \"{command}\", but the end of the answer is missing: {detail}.",
     "Characters get lost: check the terminating resistors and the supply of the adapter, and whether a "
     "device server cuts answers up.",
     kReadoutOrLine},
    {Fault::TooLong, "answer too long",
     "Something follows the answer of {readout} to \"{command}\": {detail}.",
     "Check the terminating resistors; then look for a second readout that answers, too.", kReadoutOrLine},
    {Fault::Twice, "answered twice", "{Readout} answered \"{command}\" twice: {detail}.",
     "Disconnect {readout}. If its address still answers, a second readout has it: give one of them another.",
     "Whether two readouts have this address, or an adapter or repeater sends everything twice, cannot be "
     "told from here."},
    {Fault::NoiseBefore, "noise before the answer",
     "Characters stand before the answer of {readout}: {detail}. Windows then take a shifted answer.",
     "Check the terminating resistors and the bias of the line: such characters arise when the direction is "
     "switched.",
     kReadoutOrLine},
    {Fault::Damaged, "damaged", "The answer of {readout} to \"{command}\" arrives damaged: {detail}.",
     "If other readouts answer well, disconnect this one and ask again: a second readout may have its "
     "address. Otherwise check cable, shield and terminating resistors.",
     "Whether the line damages it or two readouts speak at once cannot be told from here."},
    {Fault::OtherCommand, "another command's answer",
     "{Readout} answers \"{command}\" with the digits of another command: {detail}.",
     "Close other programs that talk on this line; then switch the readout off and on again.",
     kReadoutOrLine},
    {Fault::OtherAddress, "another address",
     "What answers a question to {readout} gives another address: {detail}.",
     "Look for a readout that answers too late, or to all addresses: disconnect one after the other.",
     kReadoutOrLine},
    {Fault::ShortReading, "short reading",
     "{Readout} answers a reading with 27 characters, as older readouts do.",
     "The calibration takes such readings. The immediate reading waits for 29 characters and says "
     "CommError."},
    {Fault::NoValue, "no value",
     "{Readout} answers \"{command}\", but no number, date or state stands where one belongs: {detail}.",
     "If it is the clock, set it (Settings > Clock Setting, or quorvelctl clock now). Otherwise switch the "
     "readout off and on again.",
     kReadoutOrLine},
    {Fault::AnotherReadout, "another readout",
     "{Readout} answers as it should. Another one does not: {detail}.", "Test again with that address."},
    {Fault::HasZ, "wrong type", "{Readout} has Z sensors, so it is of type C, but type {detail} is chosen.",
     "Choose Sensor Type C in the main window, or quorvelctl --type C."},
    {Fault::LacksZ, "wrong type", "Type C is chosen, but {readout} does not answer \"Read Z1 and Z2\".",
     "Choose the readout's type in the main window, or with quorvelctl --type.",
     "Whether it is of type A, B or D, or of type C and leaves this command out, cannot be told from here."},
};

constexpr bool inOrder()
{
    for (std::size_t i = 0; i < std::size(kFaults); ++i) {
        if (static_cast<std::size_t>(kFaults[i].fault) != i) return false;
    }
    return std::size(kFaults) == static_cast<std::size_t>(Fault::LacksZ) + 1;
}
static_assert(inOrder(), "each fault has one row, in the order of Fault");

const FaultRow& rowOf(Fault fault) { return kFaults[static_cast<std::size_t>(fault)]; }

/// A fault and what its sentences tell.
struct Cause {
    Fault fault;
    QString detail;
    QString command;
};

QString inQuotes(std::string_view characters)
{
    return u'"' + link::shown(protocol::printable(characters)) + u'"';
}

/// What stands in the way before a readout is asked.
std::optional<Cause> causeInLine(const Findings& found)
{
    if (!found.lostReason.isEmpty()) return Cause{Fault::PortLost, found.lostReason, {}};
    if (found.stopped) return Cause{Fault::Stopped, {}, {}};
    if (!found.portOpen) return Cause{Fault::PortClosed, resultOf(Step::Port, found), {}};
    if (found.echoes) {
        const bool answered = found.readoutAnswers() || !found.searched.empty();
        return Cause{answered ? Fault::Echo : Fault::EchoOnly, {}, {}};
    }
    if (!found.unasked.empty()) return Cause{Fault::Noise, inQuotes(found.unasked), {}};
    if (!found.task.notAnAddress.isEmpty()) return Cause{Fault::NotAnAddress, found.task.notAnAddress, {}};
    return std::nullopt;
}

QString searchInWords() { return link::shown(protocol::command(protocol::CommandId::Search).name); }

/// Nothing comes from the readout, or no readout is named.
std::optional<Cause> causeOfSilence(const Findings& found)
{
    if (found.task.address && found.readoutAnswers()) return std::nullopt;
    if (found.searched.empty()) {
        if (found.beforeSearch.empty()) return Cause{Fault::NothingAnswers, {}, {}};
        return Cause{Fault::Damaged, inQuotes(found.beforeSearch), searchInWords()};
    }
    if (found.searchLate) return Cause{Fault::Late, QStringLiteral("the search too late"), {}};
    if (!found.task.address) return Cause{Fault::LineGood, {}, {}};
    return Cause{found.readoutAnswersSearch() ? Fault::SearchOnly : Fault::ReadoutSilent, {}, {}};
}

Fault faultOf(Shape shape)
{
    switch (shape) {
    case Shape::Good:
        return Fault::None;
    case Shape::Silent:
        return Fault::CommandSilent;
    case Shape::Short:
        return Fault::BreaksOff;
    case Shape::Long:
        return Fault::TooLong;
    case Shape::Twice:
        return Fault::Twice;
    case Shape::NoiseBefore:
        return Fault::NoiseBefore;
    case Shape::OtherReadout:
        return Fault::OtherAddress;
    case Shape::OtherCommand:
        return Fault::OtherCommand;
    case Shape::Brief:
        return Fault::ShortReading;
    case Shape::BadValue:
        return Fault::NoValue;
    case Shape::Garbled:
        break;
    }
    return Fault::Damaged;
}

QString whatIsMissing(const Asked& asked)
{
    const auto whole = static_cast<std::size_t>(protocol::command(asked.command).reply.count);
    const auto count = QStringLiteral("%1 of %2 characters came").arg(asked.reply.size()).arg(whole);
    return asked.reply.size() + 1 == whole ? count + QStringLiteral(", the line feed is missing") : count;
}

std::optional<Cause> causeIn(const Asked& asked)
{
    const auto shape = asked.fault();
    if (!shape) return std::nullopt;
    const auto name = link::shown(protocol::command(asked.command).name);
    if (asked.lateSeconds) {
        return Cause{Fault::Late,
                     QStringLiteral("\"%1\" after %2 s").arg(name).arg(*asked.lateSeconds, 0, 'f', 1), name};
    }
    if (asked.wasGood()) return Cause{Fault::NowAndThen, wordsOf(*shape), name};
    const auto fault = faultOf(*shape);
    return Cause{fault, fault == Fault::BreaksOff ? whatIsMissing(asked) : inQuotes(asked.reply), name};
}

/// The readout answers, but not as it should. One that comes damaged tells more than one that does not come.
std::optional<Cause> causeInAnswers(const Findings& found)
{
    std::optional<Cause> first;
    for (const auto& asked : found.readout) {
        const auto cause = causeIn(asked);
        if (cause && (!first || first->fault == Fault::CommandSilent)) first = cause;
    }
    return first;
}

std::optional<Cause> causeInSearch(const Findings& found)
{
    if (found.searchLate) return Cause{Fault::Late, QStringLiteral("the search too late"), {}};
    const auto own = std::ranges::count(found.searched, *found.task.address);
    if (own > 1) return Cause{Fault::Twice, listOf(found.searched), searchInWords()};
    if (!found.beforeSearch.empty())
        return Cause{Fault::NoiseBefore, inQuotes(found.beforeSearch), searchInWords()};
    if (own == 1) return std::nullopt;
    const bool othersSilent =
        std::ranges::all_of(found.others, [](const auto& other) { return other.second == Shape::Silent; });
    return Cause{!found.others.empty() && othersSilent ? Fault::SearchWrong : Fault::SearchSilent, {}, {}};
}

std::optional<Cause> causeInType(const Findings& found)
{
    using link::InstrumentType;
    if (!found.z || !found.task.type) return std::nullopt;
    const bool chosenC = *found.task.type == InstrumentType::TypeC;
    if (!found.z->fault()) {
        const auto letter = QChar('A' + *found.task.type - InstrumentType::TypeA);
        return chosenC ? std::nullopt : std::optional(Cause{Fault::HasZ, letter, {}});
    }
    const bool silent = !found.z->wasGood() && found.z->fault() == Shape::Silent && !found.z->lateSeconds;
    if (silent) return chosenC ? std::optional(Cause{Fault::LacksZ, {}, {}}) : std::nullopt;
    return causeIn(*found.z);
}

std::optional<Cause> causeInOthers(const Findings& found)
{
    const auto bad =
        std::ranges::find_if(found.others, [](const auto& other) { return other.second != Shape::Good; });
    const auto doubled = std::ranges::adjacent_find(found.searched);
    if (doubled != found.searched.end())
        return Cause{Fault::AnotherReadout, QStringLiteral("%1 answered the search twice").arg(*doubled), {}};
    if (bad == found.others.end()) return std::nullopt;
    return Cause{
        Fault::AnotherReadout, QStringLiteral("%1, %2").arg(bad->first).arg(wordsOf(bad->second)), {}};
}

Cause causeOf(const Findings& found)
{
    for (auto* look :
         {causeInLine, causeOfSilence, causeInAnswers, causeInSearch, causeInType, causeInOthers}) {
        if (auto cause = look(found)) return *cause;
    }
    return {Fault::None, {}, {}};
}

QString filled(const char* words, const Findings& found, const Cause& cause)
{
    auto heard = found.searched;
    heard.erase(std::unique(heard.begin(), heard.end()), heard.end());
    const auto address = found.task.address.value_or(0);
    QString text = QString::fromLatin1(words);
    text.replace(QLatin1String("{Readout}"),
                 address > 0 ? QStringLiteral("Readout %1").arg(address) : QStringLiteral("A readout"));
    text.replace(QLatin1String("{readout}"),
                 address > 0 ? QStringLiteral("readout %1").arg(address) : QStringLiteral("a readout"));
    text.replace(QLatin1String("{heard}"), heard.empty() ? QStringLiteral("none") : listOf(heard));
    text.replace(QLatin1String("{command}"), cause.command);
    // Last: it may hold anything that came from the line.
    return text.replace(QLatin1String("{detail}"), cause.detail);
}

} // namespace

Conclusion conclude(const Findings& findings)
{
    const auto cause = causeOf(findings);
    const auto& row = rowOf(cause.fault);
    return {cause.fault, filled(row.what, findings, cause), filled(row.next, findings, cause),
            filled(row.unknown, findings, cause)};
}

std::string_view nameOf(Fault fault) { return rowOf(fault).name; }

} // namespace quorvel::line
