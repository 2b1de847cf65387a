#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/values.h"
#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

namespace quorvel::ctl {

namespace {

using link::shown;

constexpr const char* kValues[] = {"x", "y", "z1", "z2"};

void listPorts(Console& console)
{
    for (const auto& entry : console.ports().entries()) {
        console.answer(entry.text, {{"port", entry.device}, {"text", entry.text}});
    }
}

/// The values of a display line by their names.
QJsonObject inFields(const Console& console, const std::string& line)
{
    constexpr std::pair<const char*, const char*> kLabels[] = {
        {"X: ", "x"}, {"Y: ", "y"}, {"Z1: ", "z1"}, {"Z2: ", "z2"}, {" Z: ", "z1"}};
    QJsonObject fields{{"address", console.address()}, {"type", console.typeName()}};
    for (const auto& [label, name] : kLabels) {
        const auto at = line.find(label);
        std::optional<std::string> text;
        if (at != std::string::npos) {
            text = line.substr(at + std::string_view(label).size(), 8);
            text->erase(text->find_last_not_of(' ') + 1);
        }
        const auto key = QString::fromLatin1(name);
        if (text || !fields.contains(key + QStringLiteral("Mm"))) insertLength(fields, key, text);
    }
    return fields;
}

/// Characters that were garbled on the line are not values.
bool holdsNumbers(const QJsonObject& fields)
{
    return std::all_of(std::begin(kValues), std::end(kValues), [&fields](const char* name) {
        const auto key = QString::fromLatin1(name);
        return fields[key + QStringLiteral("Text")].isNull() || !fields[key + QStringLiteral("Mm")].isNull();
    });
}

void takeReading(Console& console)
{
    const auto line = protocol::ReadSensorValues(console.module1(), console.address(), console.bench());
    if (line == protocol::kReadingFailed) {
        console.fail(console.failureOfLine().value_or(Failure::Garbled),
                     QStringLiteral("readout %1 did not answer with the %2 characters of a reading.")
                         .arg(console.address())
                         .arg(protocol::kValuesReplyLength));
        return;
    }
    const auto object = inFields(console, line);
    if (!holdsNumbers(object)) {
        return console.fail(Failure::Garbled,
                            QStringLiteral("readout %1 answered \"%2\", which is not a reading.")
                                .arg(console.address())
                                .arg(shown(protocol::inOneLine(line)).trimmed()));
    }
    console.answer(shown(line).trimmed(), object);
}

void readOnce(Console& console)
{
    if (console.openReadout(Access::Reads)) takeReading(console);
}

} // namespace

void addBusCommands(CLI::App& app, Console& console)
{
    addCommand(app, "ports", "List the serial ports", "ports")->callback([&console] { listPorts(console); });
    addCommand(app, "read", "Read the values of one readout", "--address 12 --type C read")
        ->callback([&console] { readOnce(console); });
}

} // namespace quorvel::ctl
