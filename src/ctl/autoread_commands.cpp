#include "ctl/commands.h"
#include "ctl/console.h"
#include "ctl/exchanges.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/schedule.h"

#include <QJsonArray>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace quorvel::ctl {

namespace {

using link::shown;

std::string digits(const Console& console) { return link::AddressToHex(console.address()); }

void showMode(Console& console)
{
    if (!console.openReadout(Access::Reads)) return;
    const auto asked = ask(console, protocol::modeQuery(digits(console)));
    if (!asked) return;
    const auto mode = protocol::readMode(asked->reply);
    QJsonArray values;
    for (const int value : mode.values) {
        values.append(value);
    }
    console.answer(shown(protocol::modeText(mode)),
                   {{"address", console.address()}, {"mode", mode.mode}, {"values", values}});
}

void setInterval(Console& console, const std::string& wanted)
{
    if (!console.openReadout(Access::Writes)) return;
    const auto* row = std::ranges::find(protocol::kIntervals, wanted, &protocol::IntervalRow::option);
    const auto position = static_cast<int>(row - std::begin(protocol::kIntervals));
    const auto exchange = console.module1().transact(protocol::intervalSet(digits(console), position));
    if (exchange.complete()) {
        console.tell(protocol::kScheduleSet);
    } else {
        failed(console, protocol::kScheduleNotSet, exchange);
    }
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
    auto* mode = app.add_subcommand("auto", "Show how a readout takes readings on its own");
    const auto interval = std::make_shared<std::string>();
    mode->add_option("--set", *interval, "Take readings at this interval from now on")
        ->check(CLI::IsMember(intervalOptions()));
    mode->callback(
        [&console, interval] { interval->empty() ? showMode(console) : setInterval(console, *interval); });
}

} // namespace quorvel::ctl
