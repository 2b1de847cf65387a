#include "app/ctl/commands.h"
#include "app/ctl/console.h"
#include "app/ctl/mdb_command.h"
#include "app/edition.h"

#include <QCoreApplication>

#include <CLI/CLI.hpp>

namespace quorvel::ctl {

namespace {

void addCommonOptions(CLI::App& app, CommonOptions& options)
{
    app.add_option("--port", options.port, "Device path or tcp:host:port (default: the first serial port)");
    app.add_option("--address", options.address, "Bus address of the readout, 1 to 249");
    app.add_option("--type", options.type, "Instrument type (default: A)")
        ->check(CLI::IsMember({"A", "B", "C", "D"}));
    app.add_flag("--json", options.json, "Answer in JSON");
}

} // namespace

int runControl(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    Console console(QString::fromLatin1(kEdition));
    CLI::App app("Talks to CCD plumb-line readouts on a serial bus.");
    app.set_version_flag("--version", std::string("quorvelctl V" QUORVEL_VERSION " ") + kEdition);
    app.require_subcommand(1);
    app.fallthrough();
    addCommonOptions(app, console.options);
    addBusCommands(app, console);
    addAutoreadCommands(app, console);
    addMdbCommand(app, console.status);
    addCalibrationCommands(app, console);
    addSettingsCommands(app, console);
    addSettingCommands(app, console);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kAnswered : kWrongUsage;
    }
    return console.status;
}

} // namespace quorvel::ctl
