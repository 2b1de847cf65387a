#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "line/conclusion.h"
#include "line/diagnosis.h"
#include "line/finder.h"
#include "link/bytes.h"
#include "protocol/search.h"
#include "text/duration.h"
#include "text/number.h"

#include <memory>
#include <optional>
#include <string_view>

namespace quorvel::ctl {

namespace {

using link::shown;

std::optional<int> addressIn(std::string_view text)
{
    if (!text::allDigits(text)) return std::nullopt;
    const int number = text::integerOf(text);
    return link::isAddress(number) ? std::optional(number) : std::nullopt;
}

/// Reads "FROM-TO" or one address; an empty text is all addresses.
std::optional<line::FinderTask> finderTask(std::string_view text)
{
    if (text.empty()) return line::FinderTask{};
    const auto dash = text.find('-');
    const auto from = addressIn(text.substr(0, dash));
    const auto to = dash == std::string_view::npos ? from : addressIn(text.substr(dash + 1));
    if (!from || !to || *from > *to) return std::nullopt;
    return line::FinderTask{*from, *to};
}

CLI::Validator range()
{
    return {[](std::string& text) {
                return finderTask(text) ? std::string() : "\"" + text + "\" is not a range such as 1-249";
            },
            "FROM-TO"};
}

QJsonValue textOrNull(const QString& text) { return text.isEmpty() ? QJsonValue() : QJsonValue(text); }

void print(Console& console, const line::FoundReadout& readout)
{
    QStringList words{QStringLiteral("%1").arg(readout.address, 2, 10, QLatin1Char('0')),
                      QStringLiteral("%1 ms").arg(readout.answerMs, 0, 'f', 1)};
    if (!readout.type.isEmpty()) words << QStringLiteral("type %1").arg(readout.type);
    if (!readout.remark.isEmpty()) words << readout.remark;
    console.answer(words.join(QStringLiteral("  ")), {{"address", readout.address},
                                                      {"answerMs", readout.answerMs},
                                                      {"type", textOrNull(readout.type)},
                                                      {"remark", textOrNull(readout.remark)}});
}

void searchEach(Console& console, const line::FinderTask& task)
{
    if (!console.openPort(Access::Reads)) return;
    int found = 0;
    const auto result =
        line::findReadouts(console.module1(), task,
                           {[&console] { return console.endRequested(); },
                            [&](int address, double secondsLeft) {
                                console.progress(QStringLiteral("Asking %1, found %2, %3  ")
                                                     .arg(address)
                                                     .arg(found)
                                                     .arg(shown(text::timeLeft(secondsLeft))));
                            },
                            [&found](const line::FoundReadout&) { ++found; }});
    for (const auto& readout : result.readouts) {
        print(console, readout);
    }
    if (result.echoes) console.tell(line::kEchoRemark);
    if (result.readouts.empty()) console.failSearch(console.failureOfLine().value_or(Failure::Silent));
}

/// The verdict; what went well is status 0.
void conclude(Console& console, const line::Conclusion& verdict)
{
    const bool well = line::isWell(verdict.fault);
    QStringList lines{(well ? QStringLiteral("Result: ") : QStringLiteral("Most likely: ")) + verdict.what,
                      QStringLiteral("Next step: ") + verdict.next};
    if (!verdict.unknown.isEmpty()) lines << QStringLiteral("Not known: ") + verdict.unknown;
    console.answer(lines.join(u'\n'), {{"verdict", shown(line::nameOf(verdict.fault))},
                                       {"what", verdict.what},
                                       {"next", verdict.next},
                                       {"unknown", textOrNull(verdict.unknown)}});
    if (!well) console.note(failureOf(verdict.fault));
}

void diagnose(Console& console)
{
    line::DiagnosisTask task;
    if (!console.options.address.empty()) task.address = console.address();
    if (!console.options.type.empty()) task.type = console.instrumentType();
    if (!console.makeLink(Access::Reads)) return;
    // A lost port is a finding here, which is told once.
    QObject::disconnect(&console.module1().port(), &link::MSComm::lost, nullptr, nullptr);
    task.whyClosed = console.openDevice();
    if (!console.ports().entries().empty()) task.port = console.ports().entries().front().device;
    const auto findings =
        line::diagnose(console.module1(), task,
                       {[&console] { return console.endRequested(); },
                        [&console](line::Step step, double secondsLeft) {
                            console.progress(line::nameOf(step) + QStringLiteral(" ..., ") +
                                             shown(text::timeLeft(secondsLeft)));
                        },
                        [&console](line::Step step, const line::Findings& found) {
                            const auto result = line::resultOf(step, found);
                            console.answer(line::nameOf(step) + QStringLiteral(": ") + result,
                                           {{"step", line::nameOf(step).toLower()}, {"result", result}});
                        }});
    conclude(console, line::conclude(findings));
}

} // namespace

void searchBus(Console& console)
{
    if (!console.openPort(Access::Reads)) return;
    const auto exchange = console.module1().transact(protocol::search());
    const auto addresses = protocol::foundAddresses(exchange.reply);
    if (addresses.empty()) {
        console.failSearch(failureOf(exchange));
        return;
    }
    for (const auto& address : addresses) {
        console.answer(shown(address), {{"address", shown(address).toInt()}});
    }
}

void addLineCommands(CLI::App& app, Console& console)
{
    auto* searching =
        addCommand(app, "search", "List the addresses that answer on the bus", "search --each 1-32");
    const auto each = std::make_shared<std::string>();
    auto* asked =
        searching
            ->add_option("--each", *each,
                         "Ask each address by itself, 1 to 249 or those of the range, and tell types "
                         "and answer times")
            ->expected(0, 1)
            ->check(range());
    searching->callback([&console, each, asked] {
        asked->count() > 0 ? searchEach(console, finderTask(*each).value_or(line::FinderTask{}))
                           : searchBus(console);
    });

    addCommand(app, "diagnose", "Test step by step why the line or a readout does not answer",
               "--address 5 diagnose")
        ->callback([&console] { diagnose(console); });
}

} // namespace quorvel::ctl
