#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "ctl/exchanges.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/schedule.h"
#include "text/number.h"

#include <QJsonArray>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace quorvel::ctl {

namespace {

using link::shown;

std::string digits(const Console& console) { return link::AddressToHex(console.address()); }

/// What a readout does, of which an interval or four hours are null.
void answerMode(Console& console, const QString& text, const protocol::AutoMode& mode)
{
    const auto& values = mode.values;
    QJsonArray hours;
    for (const int value : values) {
        hours.append(value);
    }
    const bool interval = mode.isInterval();
    console.answer(text,
                   {{"address", console.address()},
                    {"mode", interval ? "interval" : "fixed"},
                    {"intervalSeconds",
                     interval ? QJsonValue((values[0] * 60 + values[1]) * 60 + values[2]) : QJsonValue()},
                    {"hoursOfDay", interval ? QJsonValue() : QJsonValue(hours)}});
}

void showMode(Console& console)
{
    if (!console.openReadout(Access::Reads)) return;
    const auto asked = ask(console, protocol::modeQuery(digits(console)));
    if (!asked) return;
    if (!protocol::isPlainModeReply(asked->reply)) return failed(console, protocol::kCommError, *asked);
    const auto mode = protocol::readMode(asked->reply);
    answerMode(console, shown(protocol::modeText(mode)), mode);
}

/// The mode that a code of kIntervals sets.
protocol::AutoMode modeOf(const protocol::IntervalRow& row)
{
    const auto two = [&row](std::size_t at) {
        return static_cast<std::int16_t>(text::integerOf(row.code.substr(at, 2)));
    };
    return {.mode = protocol::AutoMode::kInterval, .values = {two(0), two(2), two(4), 0}};
}

void setInterval(Console& console, const std::string& wanted)
{
    if (!console.openReadout(Access::Writes)) return;
    const auto* row = std::ranges::find(protocol::kIntervals, wanted, &protocol::IntervalRow::option);
    const auto position = static_cast<int>(row - std::begin(protocol::kIntervals));
    const auto exchange = console.module1().transact(protocol::intervalSet(digits(console), position));
    if (!exchange.complete()) return failed(console, protocol::kScheduleNotSet, exchange);
    console.tell(protocol::kScheduleSet);
    answerMode(console, shown(protocol::modeText(modeOf(*row))), modeOf(*row));
}

std::vector<std::string> intervalOptions()
{
    std::vector<std::string> options;
    for (const auto& row : protocol::kIntervals) {
        options.emplace_back(row.option);
    }
    return options;
}

} // namespace

void addAutoreadCommands(CLI::App& app, Console& console)
{
    auto* mode = addCommand(app, "auto", "Print or set how a readout takes readings on its own",
                            "--address 5 auto 10m");
    const auto interval = std::make_shared<std::string>();
    mode->add_option("INTERVAL", *interval, "Take readings at this interval from now on")
        ->check(CLI::IsMember(intervalOptions()));
    mode->callback(
        [&console, interval] { interval->empty() ? showMode(console) : setInterval(console, *interval); });
}

} // namespace quorvel::ctl
