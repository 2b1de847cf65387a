#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/search.h"
#include "protocol/values.h"
#include "site/sitefile.h"
#include "text/number.h"

#include <memory>
#include <string>

namespace quorvel::ctl {

namespace {

/// The options of `site create`.
struct NewSite {
    std::string file;
    std::string name;
};

/// The type as far as a readout tells it: an answer to the question for Z is that of type C. A, B and D cannot be told
/// apart.
site::Readout readoutAt(Console& console, const std::string& decimal)
{
    site::Readout readout;
    readout.address = text::integerOf(decimal);
    const auto asked = console.module1().transact(protocol::zQuery(link::AddressToHex(readout.address)));
    if (protocol::measuresZ(asked).value_or(false)) readout.type = link::TypeC;
    return readout;
}

/// The port as it is in the file: a name that was given, so that the file goes on meaning it.
QString portOf(Console& console)
{
    const auto given = QString::fromLocal8Bit(console.options.port.c_str());
    return given.isEmpty() ? console.module1().port().deviceName() : given;
}

std::optional<site::Site> searched(Console& console)
{
    site::Site site;
    site.port = portOf(console);
    for (const auto& address :
         protocol::foundAddresses(console.module1().transact(protocol::search()).reply)) {
        if (console.endRequested()) return std::nullopt;
        const int number = link::addressIn(address);
        if (number == 0 || site.readoutAt(number)) continue;
        const auto& readout = site.readouts.emplace_back(readoutAt(console, address));
        if (!console.module1().port().PortOpen()) return std::nullopt; // its silence tells no type
        const auto type = link::shown(protocol::nameOf(readout.type));
        console.answer(QStringLiteral("%1  type %2%3")
                           .arg(number, 3)
                           .arg(type, readout.type == link::TypeC ? QString() : QStringLiteral(" (or B, D)")),
                       {{"address", number}, {"type", type}});
    }
    return site;
}

void createSite(Console& console, const NewSite& task)
{
    const auto file = QString::fromLocal8Bit(task.file.c_str());
    if (!console.mayMake(file) || !console.openPort(Access::Reads)) return;
    auto site = searched(console);
    if (!site) {
        return console.fail(console.endRequested() ? Failure::Ended : Failure::PortLost,
                            QStringLiteral("No file was written."));
    }
    if (site->readouts.empty()) return console.failSearch(console.failureOfLine().value_or(Failure::Silent));
    site->name = QString::fromLocal8Bit(task.name.c_str());
    if (!console.agrees(
            QStringLiteral("Write %1 with these %2 readouts?").arg(file).arg(site->readouts.size()),
            Access::Reads))
        return console.fail(Failure::NeedsYes, QStringLiteral("No file was written. Add --yes to do it."));
    const auto written = site::saveSite(pathOf(task.file), *site);
    if (!written) return console.fail(Failure::File, QString::fromStdString(written.error()));
    console.tell(
        QStringLiteral("%1 is written. Add names and limits, and correct types that are B or D.").arg(file));
}

} // namespace

void addSiteCommand(CLI::App& app, Console& console)
{
    auto* site =
        addCommand(app, "site", "Site files: the readouts of a bus", "site create dam.quorvel-site.json");
    site->require_subcommand(1);
    auto* create = addCommand(
        *site, "create", "Search the bus, tell type C by its answer for Z, and write a site file; asks first",
        "site create dam.quorvel-site.json --name \"North dam\" --yes");
    const auto task = std::make_shared<NewSite>();
    create->add_option("FILE", task->file, "NAME.quorvel-site.json")->required();
    create->add_option("--name", task->name, "What the site is called");
    addYes(*create, console);
    addForce(*create, console);
    create->callback([&console, task] { createSite(console, *task); });
}

} // namespace quorvel::ctl
