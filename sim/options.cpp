#include "sim/options.h"

#include "sim/text.h"

#include <CLI/CLI.hpp>

namespace quorvelsim {

namespace {

constexpr int kWrongUsage = 2;
constexpr int kLastAddress = 249;

CLI::Validator checked(const char* form, std::function<std::string(std::string&)> check)
{
    return {std::move(check), form};
}

CLI::Validator readoutForm()
{
    return checked("ADDRESS:TYPE", [](std::string& text) {
        std::map<int, const ReadoutType*> ignored;
        return addReadouts(text, ignored);
    });
}

CLI::Validator ringForm()
{
    return checked("ADDRESS:CAPACITY,FIRST,NEXT", [](std::string& text) {
        std::map<int, RingShape> ignored;
        return addRing(text, ignored);
    });
}

CLI::Validator faultForm()
{
    return checked("KIND@COMMAND[:COUNT]", [](std::string& text) { return Faults().add(text); });
}

CLI::Validator bitErrorsForm()
{
    return checked("RATE[,SEED]", [](std::string& text) { return BitErrors().set(text); });
}

CLI::Validator clockForm()
{
    return checked("YYYY-MM-DDTHH:MM:SS", [](std::string& text) {
        return fromIsoTime(text) ? std::string{} : "\"" + text + "\" is no time such as 2024-05-17T09:05:30";
    });
}

} // namespace

std::optional<int> readOptions(int argc, const char* const* argv, Options& options)
{
    CLI::App app{
        "A bus of CCD plumb-line readouts. Prints the port that a client opens, and ends when its input "
        "closes."};
    std::vector<std::string> readouts;
    std::vector<std::string> rings;
    std::string clock;
    bool noControl = false;
    app.add_option("--readout", readouts, "A readout, such as 5:A, or several, such as 1-249:A")
        ->check(readoutForm());
    app.add_option("--ring", rings, "The stored readings of a readout, such as 5:1000,998,2")
        ->check(ringForm());
    app.add_option("--fault", options.faults, "What goes wrong, such as silent@2101 or short@5/24:1+10")
        ->check(faultForm());
    app.add_option("--set", options.settings,
                   "Sets something of a readout, such as '5 clockoff -3600' or '5 noisy 17,date'");
    app.add_option(
           "--bit-errors", options.bitErrors,
           "The share of characters that arrive with one bit wrong, both ways, and its seed: 0.0001,7")
        ->check(bitErrorsForm());
    app.add_option("--tcp", options.tcp,
                   "Listen at HOST:PORT instead of a pseudo-terminal; port 0 takes a free one");
    app.add_flag("--fast", options.fast, "No pace: answers come at once");
    app.add_option("--seed", options.seed, "Another wire for another number")->capture_default_str();
    app.add_option("--clock", clock, "What the readouts' clocks show at the start")->check(clockForm());
    app.add_flag("--no-control", noControl, "Take no lines from standard input, and end only by a signal");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrongUsage;
    }
    options.control = !noControl;
    options.clock = fromIsoTime(clock);
    if (readouts.empty()) readouts = {"5:A", "12:B", "33:C", "100:D", "249:C"};
    for (const auto& text : readouts)
        addReadouts(text, options.readouts);
    for (const auto& text : rings)
        addRing(text, options.rings);
    return std::nullopt;
}

std::string addReadouts(std::string_view text, std::map<int, const ReadoutType*>& readouts)
{
    const auto colon = text.find(':');
    const auto* type = colon == std::string_view::npos ? nullptr : findReadoutType(text.substr(colon + 1));
    if (type == nullptr)
        return "\"" + std::string(text) + "\" is not ADDRESS:TYPE with the type A, B, C or D";
    const auto range = text.substr(0, colon);
    const auto dash = range.find('-');
    const auto first = decimal(range.substr(0, dash)).value_or(0);
    const auto last = dash == std::string_view::npos ? first : decimal(range.substr(dash + 1)).value_or(0);
    if (first < 1 || last < first || last > kLastAddress)
        return "\"" + std::string(range) + "\" is no address from 1 to 249";
    for (int address = first; address <= last; ++address)
        readouts[address] = type;
    return {};
}

std::string addRing(std::string_view text, std::map<int, RingShape>& rings)
{
    const auto colon = text.find(':');
    const auto address = decimal(text.substr(0, colon)).value_or(0);
    const auto shape = colon == std::string_view::npos ? std::nullopt : ringShape(text.substr(colon + 1));
    if (address < 1 || address > kLastAddress || !shape)
        return "\"" + std::string(text) + "\" is not ADDRESS:CAPACITY,FIRST,NEXT, capacity 1 to 9999";
    rings[address] = *shape;
    return {};
}

std::string fillBus(const Options& options, Bus& bus)
{
    const auto clock = options.clock.value_or(pcTime());
    for (const auto& [address, type] : options.readouts)
        bus.add(Readout(address, *type, options.seed, clock));
    for (const auto& [address, shape] : options.rings) {
        auto* readout = bus.find(address);
        if (readout == nullptr) return "--ring: no readout has the address " + std::to_string(address);
        readout->fillRing(shape.capacity, shape.first, shape.next, 0);
    }
    for (const auto& text : options.settings) {
        std::string_view rest = text;
        auto* readout = bus.find(decimal(nextWord(rest)).value_or(0));
        if (readout == nullptr) return "--set: no readout has the address in \"" + text + "\"";
        if (auto reason = applySetting(*readout, rest, 0); !reason.empty()) return "--set: " + reason;
    }
    if (auto reason = options.bitErrors.empty() ? std::string{} : bus.bitErrors().set(options.bitErrors);
        !reason.empty())
        return "--bit-errors: " + reason;
    for (const auto& fault : options.faults) {
        if (auto reason = bus.faults().add(fault); !reason.empty()) return "--fault: " + reason;
    }
    return {};
}

} // namespace quorvelsim
