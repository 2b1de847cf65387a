#include "ctl/commands.h"
#include "ctl/console.h"
#include "ctl/validators.h"
#include "link/interrupt.h"
#include "link/serialport.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <string_view>

namespace quorvel::ctl {

namespace {

constexpr int kSignalled = 128;

void addCommonOptions(CLI::App& app, CommonOptions& options)
{
    app.add_option("--port", options.port,
                   "Device path or tcp:host:port (default: the first serial port, to write the only one)")
        ->envname("QUORVEL_PORT")
        ->check(deviceName());
    app.add_option("--address", options.address, "Bus address of the readout, 1 to 249")
        ->envname("QUORVEL_ADDRESS")
        ->check(busAddress());
    app.add_option("--type", options.type, "Instrument type (default: A; settings find out whether it is C)")
        ->check(CLI::IsMember({"A", "B", "C", "D"}));
    app.add_flag("--json", options.json, "Answer in JSON, one object a line");
    app.add_flag("--quiet", options.quiet, "Say nothing but answers and failures");
    app.add_flag("--progress", options.progress, "Show progress although stderr is not a terminal");
    app.add_flag_callback(
        "--no-journal", [&options] { options.journal = false; }, "Do not book what is set and deleted");
    app.add_flag("--read-only", options.readOnly, "Send nothing that would change a readout");
    app.add_option("--trace", options.trace,
                   "Append the traffic on the bus to this file, one JSON object a line");
    app.add_flag("--stats", options.stats,
                 "Print at the end how well each readout answered, as CSV on stderr");
}

constexpr auto kFooter = R"(A command that takes a value asks without one, and sets with it.

Exit status:
  0  done
  1  another failure
  2  the command line is wrong; nothing was sent
  3  the port: missing, in use, lost
  4  no answer
  5  an answer that is short, garbled or not of its form
  6  refused: a confirmation is missing, a file exists, only reading is allowed, or it is not safe)";

} // namespace

int runCommandLine(Console& console, int argc, const char* const argv[], const AddCommands& more)
{
    CLI::App app("Talks to CCD plumb-line readouts on a serial bus.",
                 console.bench().isUserEdition() ? "quorvelctl" : "quorvelctl-factory");
    app.set_version_flag("--version", std::string("quorvelctl V" QUORVEL_VERSION " ") +
                                          console.bench().edition.toStdString());
    app.footer(kFooter);
    app.require_subcommand(1);
    app.fallthrough();
    addCommonOptions(app, console.options);
    link::setAdviser(link::Adviser::CommandLine);
    addLineCommands(app, console);
    addBusCommands(app, console);
    addWatchCommand(app, console);
    addSiteCommand(app, console);
    addAutoreadCommands(app, console);
    addStoredCommands(app, console);
    addMdbCommand(app, console);
    addRawCommand(app, console);
    addSettingsCommands(app, console);
    addSettingCommands(app, console);
    addGrayscaleCommands(app, console);
    if (more) more(app, console);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error); // --help, --version
        // the options are not taken over when one of them is wrong
        console.options.json =
            std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--json"; });
        console.fail(Failure::Usage, QString::fromStdString(error.what()));
        console.tell(QStringLiteral("Run with --help for more information."));
    }
    if (!app.got_subcommand("diagnose")) console.adviseTest();
    console.finish();
    return static_cast<int>(console.status());
}

int runControl(int argc, char* argv[], const char* edition, const AddCommands& more)
{
    Console console(QString::fromLatin1(edition));
    link::noteInterrupts();
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away is told like a full disk
#endif
    const int status = runCommandLine(console, argc, argv, more);
    // as shells count: 130 for Ctrl+C
    return link::interruptSignal() != 0 ? kSignalled + link::interruptSignal() : status;
}

} // namespace quorvel::ctl
