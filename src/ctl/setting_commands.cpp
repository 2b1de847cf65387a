#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "ctl/exchanges.h"
#include "ctl/validators.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/change_address.h"
#include "protocol/command.h"
#include "protocol/feature.h"
#include "protocol/readout_clock.h"
#include "protocol/reference.h"
#include "protocol/reset.h"
#include "protocol/switches.h"
#include "protocol/wire.h"
#include "text/number.h"

#include <functional>
#include <optional>

namespace quorvel::ctl {

namespace {

using link::shown;
using namespace protocol;

/// What stands behind a subcommand; empty where it was not given.
struct Arguments {
    std::string direction; ///< X, Y or Z
    std::string value;     ///< of the wire: the diameter
    std::string permittedError;
    std::string selfCalibration = "on";
};

bool isOn(const std::string& word) { return word == "on"; }
/// Writes, if this was given to be set.
Access accessFor(const std::string& wanted) { return wanted.empty() ? Access::Reads : Access::Writes; }
QString onOff(bool on) { return on ? QStringLiteral("on") : QStringLiteral("off"); }

/// The place of a direction in the tables.
std::size_t indexOf(const std::string& direction) { return static_cast<std::size_t>(direction[0] - 'X'); }

/// openReadout(), for a readout that has this direction.
bool openDirection(Console& console, const Arguments& given)
{
    if (!console.checkReadout()) return false;
    const auto& direction = given.direction;
    if (hasDirection(console.instrumentType(), kOffsets[indexOf(direction)].direction))
        return console.openPort(accessFor(given.value));
    console.fail(Failure::Usage,
                 QStringLiteral("A readout of type %1 has no %2 direction. Give its type with --type.")
                     .arg(shown(std::string(nameOf(console.instrumentType()))), shown(direction)));
    return false;
}

QJsonObject answerOf(const Console& console, const std::string& direction)
{
    return {{"address", console.address()}, {"direction", shown(direction)}};
}

void answerOffset(Console& console, const std::string& direction, const std::string& offset)
{
    auto object = answerOf(console, direction);
    insertLength(object, QStringLiteral("offset"), offset);
    console.answer(shown(offset), object);
}

void queryOffset(Console& console, const OffsetRow& row)
{
    const auto exchange = ask(console, offsetQuery(row, console.bench().addressDigits()));
    if (!exchange) return;
    const auto held = offsetOf(row, exchange->reply);
    if (isSignedValue(held)) {
        answerOffset(console, std::string(nameOf(row.direction)), held);
    } else {
        failed(console, kCommError, *exchange);
    }
}

void offset(Console& console, const Arguments& given)
{
    if (!openDirection(console, given)) return;
    const auto& row = kOffsets[indexOf(given.direction)];
    const auto address = console.bench().addressDigits();
    if (given.value.empty()) {
        queryOffset(console, row);
        return;
    }
    const auto value = signedValue(row, text::Val(given.value));
    if (order(console, offsetSet(row, address, value))) answerOffset(console, given.direction, value);
}

/// @param withoutOffset  the reading without the offset, in mm.
void answerReference(Console& console, const std::string& direction, const ReferenceRun& run,
                     const std::string& text, double withoutOffset)
{
    auto object = answerOf(console, direction);
    insertLength(object, QStringLiteral("offset"), run.offset);
    insertLength(object, QStringLiteral("reading"), run.reading);
    object.insert("valueWithoutOffsetMm",
                  text::isNumber(run.reading) ? QJsonValue(withoutOffset) : QJsonValue());
    console.answer(shown(text), object);
}

// Whatever breaks in between, the offset that was there can be set again.
void setReference(Console& console, const ReferenceRow& row, const Arguments& given)
{
    const auto former = ask(console, offsetQuery(row.offset, console.bench().addressDigits()));
    if (!former) return;
    console.tell(
        QStringLiteral("The offset was %1.").arg(shown(inOneLine(offsetOf(row.offset, former->reply)))));
    const auto run =
        setReference(console.module1(), console.bench(), row, text::Val(given.value), [&console] {
            console.tell(QStringLiteral("Waiting 2 seconds for the readout to settle ..."));
        });
    if (run.offset.size() > kValueLength) console.tell(kOffsetTooLong);
    if (!run.confirmed) {
        failed(console, run.complete ? kSetFailed : kCommError, run.last);
        if (const auto loss = lossText(run); !loss.empty()) console.tell(shown(loss));
        return;
    }
    console.tell(shown(inOneLine(referenceSetText(run))));
    answerReference(console, given.direction, run, run.offset, text::Val(run.reading));
    if (const auto counted = countedText(run); !counted.empty())
        console.fail(Failure::Garbled, shown(counted));
}

void queryReference(Console& console, const ReferenceRow& row, const Arguments& given)
{
    const auto run =
        queryReference(console.module1(), console.bench(), row, [](const std::string& /*offset*/) {});
    if (!run.complete) {
        failed(console, kCommError, run.last);
        return;
    }
    if (!isSignedValue(run.offset) || !text::isNumber(run.reading)) {
        console.fail(
            Failure::Garbled,
            QStringLiteral("The readout did not return numbers: the offset \"%1\", the reading \"%2\".")
                .arg(shown(inOneLine(run.offset)), shown(inOneLine(run.reading))));
        return;
    }
    answerReference(console, given.direction, run, run.offset + "  " + text::general(run.realValue),
                    run.realValue);
}

void reference(Console& console, const Arguments& given)
{
    if (!openDirection(console, given)) return;
    const auto& row = kReferences[indexOf(given.direction)];
    (given.value.empty() ? queryReference : setReference)(console, row, given);
}

/// Sets something that is on or off, or prints its state.
void flipOrQuery(Console& console, const QString& name, const Arguments& given,
                 const std::function<link::Transaction(bool)>& set, const link::Transaction& query,
                 std::optional<bool> (*stateOf)(std::string_view reply))
{
    const auto answer = [&](bool on) {
        QJsonObject object{{"address", console.address()}, {name, on}};
        if (!given.direction.empty()) object.insert("direction", shown(given.direction));
        console.answer(onOff(on), object);
    };
    if (!given.value.empty()) {
        const bool on = isOn(given.value);
        if (order(console, set(on))) answer(on);
        return;
    }
    const auto exchange = ask(console, query);
    if (!exchange) return;
    if (const auto state = stateOf(exchange->reply)) {
        answer(*state);
    } else {
        failed(console, kCommError, *exchange);
    }
}

void feature(Console& console, const Arguments& given)
{
    if (!console.openReadout(accessFor(given.value))) return;
    const auto address = console.bench().addressDigits();
    flipOrQuery(
        console, QStringLiteral("referenceFeature"), given, [&](bool on) { return featureSet(address, on); },
        featureQuery(address), featureStateOf);
}

void switchOne(Console& console, const SwitchRow& row, const QString& name, const Arguments& given)
{
    const auto address = console.bench().addressDigits();
    flipOrQuery(
        console, name, given, [&](bool on) { return switchSet(row, address, on); }, switchQuery(row, address),
        switchStateOf);
}

void invert(Console& console, const Arguments& given)
{
    if (!openDirection(console, given)) return;
    switchOne(console, kSwitches[indexOf(given.direction)], QStringLiteral("inverted"), given);
}

void swap(Console& console, const Arguments& given)
{
    if (console.openReadout(accessFor(given.value)))
        switchOne(console, kSwap, QStringLiteral("swapped"), given);
}

void queryWire(Console& console)
{
    const auto exchange = ask(console, wireQuery(console.bench().addressDigits()));
    if (!exchange) return;
    const auto wire = wireOf(exchange->reply);
    if (!wire || !isPlainWireReply(exchange->reply)) {
        failed(console, kCommError, *exchange);
        return;
    }
    const bool user = console.bench().isUserEdition();
    const auto received = [&](std::size_t index) {
        return shown(field(CommandId::QueryWire, index, exchange->reply));
    };
    console.answer(shown(wireText(*wire, user)).trimmed(),
                   {{"address", console.address()},
                    {"diameterMm", static_cast<double>(wire->diameterTenthsMm) / 10},
                    {"diameterText", received(0)},
                    {"permittedErrorMm", static_cast<double>(wire->errorTenthsMm) / 10},
                    {"permittedErrorText", received(1)},
                    {"selfCalibration", user ? QJsonValue() : QJsonValue(wire->selfCalibration)}});
}

void wire(Console& console, const Arguments& given)
{
    if (given.value.empty()) {
        if (console.openReadout(Access::Reads)) queryWire(console);
        return;
    }
    const WireParameters wanted{tenthsOf(given.value), tenthsOf(given.permittedError),
                                isOn(given.selfCalibration)};
    if (!fitsWireField(wanted.diameterTenthsMm) || !fitsWireField(wanted.errorTenthsMm)) {
        console.fail(Failure::Usage, QStringLiteral("Lengths are 0 to 9.9 mm."));
        return;
    }
    if (console.openReadout(Access::Writes) &&
        order(console, wireSet(console.bench().addressDigits(), wanted)))
        queryWire(console);
}

void clock(Console& console, const Arguments& given)
{
    const bool sets = !given.value.empty();
    if (!console.openReadout(accessFor(given.value))) return;
    const auto address = console.bench().addressDigits();
    if (sets && !order(console, clockSet(address, console.module1().clock().now()))) return;
    const auto exchange = ask(console, clockQuery(address));
    if (!exchange) return;
    const auto& reply = exchange->reply;
    const auto text = shown(inOneLine(clockText(reply)));
    if (const auto time = clockOf(reply)) {
        console.answer(
            text,
            {{"address", console.address()}, {"clock", time->toString(Qt::ISODate)}, {"clockText", text}});
    } else {
        console.fail(Failure::Garbled,
                     QStringLiteral("The readout's clock shows no date and time: \"%1\".").arg(text));
    }
}

void address(Console& console, const Arguments& given)
{
    if (given.value.empty()) return searchBus(console);
    const int wanted = text::integerOf(given.value);
    if (!console.checkReadout()) return;
    if (const auto* error = addressChangeError(console.address(), wanted)) {
        console.fail(Failure::Usage, error);
        return;
    }
    if (!console.openPort(Access::Writes)) return;
    auto change = addressChange(console.address(), wanted);
    change.drains = true;
    if (const auto exchange = console.module1().transact(change);
        !link::confirms(exchange.transaction, exchange.reply)) {
        failed(console, kAddressNotChanged, exchange);
        return;
    }
    console.tell(kAddressChanged);
    console.answer(QString::number(wanted), {{"address", wanted}, {"formerAddress", console.address()}});
}

void reset(Console& console, const Arguments& /*given*/)
{
    if (!console.checkReadout()) return;
    if (!console.agrees(QStringLiteral("A reset overwrites the settings of readout %1 and deletes its stored "
                                       "readings for good. Reset it?")
                            .arg(console.address())))
        return console.fail(Failure::NeedsYes, QStringLiteral("Nothing was reset. Add --yes to do it."));
    if (!console.openReadout(Access::Writes)) return;
    const auto run = runReset(console.module1(), console.bench(),
                              [&console](const std::string& step) { console.tell(shown(step)); });
    if (run.ok) {
        console.answer(kResetOk, {{"address", console.address()}, {"reset", true}});
    } else {
        console.fail(console.failureOfLine().value_or(Failure::Unconfirmed),
                     kResetFailed + shown(" At " + run.where + ": ") + run.why);
    }
}

/// What a subcommand takes.
enum Takes : unsigned {
    kDirection = 1,
    kNumber = 2,
    kOnOff = 4,
    kAddress = 8,
    kWire = 16,
    kYes = 32,
    kNow = 64,
};

struct Row {
    const char* name;
    const char* help;
    const char* example;
    unsigned takes;
    void (*run)(Console& console, const Arguments& given);
};
constexpr Row kRows[] = {
    {"offset", "Print or set the offset of a direction", "--address 5 offset X 1.5", kDirection | kNumber,
     offset},
    {"reference", "Print or set the reference of a direction: what it reads where the wire is now",
     "--address 5 reference X 10", kDirection | kNumber, reference},
    {"feature", "Print or switch the use of the reference", "--address 5 feature on", kOnOff, feature},
    {"invert", "Print or switch the inversion of a direction", "--address 5 invert X on", kDirection | kOnOff,
     invert},
    {"swap", "Print or switch the exchange of X and Y", "--address 5 swap off", kOnOff, swap},
    {"wire", "Print or set wire diameter and permitted error", "--address 5 wire 1.5 0.3", kWire, wire},
    {"clock", "Print the readout's clock, or set it to this machine's time", "--address 5 clock now", kNow,
     clock},
    {"address", "Print the addresses that answer, or give the readout a new one", "--address 5 address 7",
     kAddress, address},
    {"reset", "Reset all settings and delete the stored readings; asks first", "--address 5 reset --yes",
     kYes, reset},
};

void addWireOptions(CLI::App& command, Arguments& given, bool userEdition)
{
    auto* diameter =
        command.add_option("DIAMETER", given.value, "Millimetres to set, 0 to 9.9")->check(number());
    auto* error =
        command.add_option("ERROR", given.permittedError, "Permitted error in millimetres, 0 to 9.9")
            ->check(number());
    diameter->needs(error);
    if (userEdition) return;
    command.add_option("--self-calibration", given.selfCalibration, "Set with them: on (default) or off")
        ->check(CLI::IsMember({"on", "off"}))
        ->needs(diameter);
}

void addOptions(CLI::App& command, Console& console, Arguments& given, unsigned takes)
{
    if (takes & kDirection) {
        command.add_option("DIRECTION", given.direction, "X, Y or Z")
            ->required()
            ->check(CLI::IsMember({"X", "Y", "Z"}));
    }
    if (takes & kNumber) command.add_option("VALUE", given.value, "Millimetres to set")->check(number());
    if (takes & kOnOff)
        command.add_option("STATE", given.value, "on or off, to set it")->check(CLI::IsMember({"on", "off"}));
    if (takes & kAddress)
        command.add_option("NEW", given.value, "1 to 249, for the readout at --address")->check(busAddress());
    if (takes & kWire) addWireOptions(command, given, console.bench().isUserEdition());
    if (takes & kYes) addYes(command, console);
    if (takes & kNow)
        command.add_option("NOW", given.value, "The word now, to set it")->check(CLI::IsMember({"now"}));
}

} // namespace

void addSettingCommands(CLI::App& app, Console& console)
{
    for (const auto& row : kRows) {
        auto* command = addCommand(app, row.name, row.help, row.example);
        const auto given = std::make_shared<Arguments>();
        addOptions(*command, console, *given, row.takes);
        command->callback([&console, given, run = row.run] { run(console, *given); });
    }
}

} // namespace quorvel::ctl
