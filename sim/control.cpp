#include "sim/control.h"

#include "sim/json.h"
#include "sim/settings.h"
#include "sim/state.h"
#include "sim/text.h"

#include <utility>

namespace quorvelsim {

struct Control::Row {
    std::string_view word;
    std::string (Control::*handle)(std::string_view, double);
};

const Control::Row Control::kRows[] = {
    {"state", &Control::state},         {"readouts", &Control::readouts}, {"frames", &Control::frames},
    {"fault", &Control::fault},         {"faults", &Control::faults},     {"set", &Control::set},
    {"take", &Control::take},           {"records", &Control::records},   {"reply", &Control::reply},
    {"biterrors", &Control::bitErrors}, {"device", &Control::device},     {"unplug", &Control::unplug},
    {"plug", &Control::plug},
};

namespace {

constexpr std::string_view kNoReadout = "no readout has this address";

std::string done() { return json::Object().add("ok", json::boolean(true)).str(); }

std::string refused(std::string_view reason) { return json::Object().add("error", json::text(reason)).str(); }

std::string doneOr(std::string_view reason) { return reason.empty() ? done() : refused(reason); }

std::string loggedFrame(const LoggedFrame& logged)
{
    json::Object object;
    object.add("text", json::text(logged.frame.text));
    object.add("first", json::number(logged.frame.first, 6)).add("last", json::number(logged.frame.last, 6));
    object.add("answered", json::number(logged.answerLength)).add("fault", json::text(logged.fault));
    return object.str();
}

} // namespace

std::string Control::handle(std::string_view line, double now)
{
    const auto whole = line;
    const auto word = nextWord(line);
    for (const auto& row : kRows)
        if (row.word == word) return (this->*row.handle)(line, now);
    std::string words;
    for (const auto& row : kRows)
        words += " " + std::string(row.word);
    return refused("\"" + std::string(whole) + "\" is not known; there are" + words);
}

Readout* Control::readoutOf(std::string_view& rest) { return bus_.find(decimal(nextWord(rest)).value_or(0)); }

std::string Control::state(std::string_view rest, double now)
{
    auto* readout = readoutOf(rest);
    if (readout == nullptr) return refused(kNoReadout);
    readout->catchUp(now);
    return stateOf(*readout, now);
}

std::string Control::readouts(std::string_view /*rest*/, double /*now*/)
{
    std::vector<std::string> list;
    for (const auto& [address, readout] : bus_.readouts()) {
        json::Object object;
        object.add("address", json::number(address)).add("type", json::text(readout.type->name()));
        list.push_back(object.str());
    }
    return json::Object().add("readouts", json::array(list)).str();
}

std::string Control::frames(std::string_view /*rest*/, double /*now*/)
{
    std::vector<std::string> list;
    for (const auto& logged : bus_.takeFrames())
        list.push_back(loggedFrame(logged));
    return json::Object()
        .add("frames", json::array(list))
        .add("dropped", json::number(bus_.droppedCharacters()))
        .str();
}

std::string Control::fault(std::string_view rest, double /*now*/)
{
    return doneOr(bus_.faults().add(nextWord(rest)));
}

std::string Control::faults(std::string_view rest, double /*now*/)
{
    if (nextWord(rest) != "clear") return refused("it is written: faults clear");
    bus_.faults().clear();
    return done();
}

std::string Control::set(std::string_view rest, double now)
{
    auto* readout = readoutOf(rest);
    if (readout == nullptr) return refused(kNoReadout);
    readout->catchUp(now);
    return doneOr(applySetting(*readout, rest, now));
}

std::string Control::take(std::string_view rest, double now)
{
    auto* readout = readoutOf(rest);
    const auto word = nextWord(rest);
    const auto count = word.empty() ? 1 : decimal(word).value_or(0);
    if (readout == nullptr) return refused(kNoReadout);
    if (count < 1 || count > 9999) return refused("it is written: take ADDRESS COUNT, the count 1 to 9999");
    readout->catchUp(now);
    for (int i = 0; i < count; ++i)
        readout->takeRecord(now);
    return done();
}

std::string Control::records(std::string_view rest, double now)
{
    auto* readout = readoutOf(rest);
    if (readout == nullptr) return refused(kNoReadout);
    readout->catchUp(now);
    std::vector<std::string> list;
    for (int back = readout->ring.stored(); back >= 1; --back) {
        const auto slot = readout->ring.slotBefore(back);
        std::vector<std::string> fields;
        for (const auto& field : readout->recordFields(slot))
            fields.push_back(json::text(field));
        json::Object object;
        list.push_back(object.add("slot", json::number(slot)).add("fields", json::array(fields)).str());
    }
    return json::Object().add("records", json::array(list)).str();
}

std::string Control::bitErrors(std::string_view rest, double /*now*/)
{
    auto& errors = bus_.bitErrors();
    if (const auto word = nextWord(rest); !word.empty())
        if (const auto reason = errors.set(word); !reason.empty()) return refused(reason);
    json::Object object;
    object.add("rate", json::number(errors.rate(), 9)).add("seed", std::to_string(errors.seed()));
    for (const auto& [name, direction] : {std::pair{"toReadouts", Direction::ToReadouts},
                                          std::pair{"fromReadouts", Direction::FromReadouts}}) {
        const auto& count = errors.count(direction);
        json::Object counted;
        counted.add("passed", std::to_string(count.passed)).add("hit", std::to_string(count.hit));
        object.add(name, counted.str());
    }
    return object.str();
}

std::string Control::reply(std::string_view rest, double /*now*/)
{
    auto* readout = readoutOf(rest);
    const std::string code(nextWord(rest));
    if (readout == nullptr) return refused(kNoReadout);
    if (findCommand(code) == nullptr) return refused("\"" + code + "\" is no command");
    if (rest.empty()) {
        readout->fixedReplies.erase(code);
    } else {
        readout->fixedReplies[code] = rest.substr(1); // one blank parts them; more belong to the reply
    }
    return done();
}

std::string Control::device(std::string_view /*rest*/, double /*now*/)
{
    const auto name = device_.name();
    return json::Object().add("device", name.empty() ? "null" : json::text(name)).str();
}

std::string Control::unplug(std::string_view /*rest*/, double /*now*/)
{
    device_.unplug();
    bus_.forget();
    return done();
}

std::string Control::plug(std::string_view rest, double now)
{
    const auto reason = device_.name().empty() ? device_.plug() : std::string{};
    return reason.empty() ? device(rest, now) : refused(reason);
}

} // namespace quorvelsim
