#include "app/options.h"

#include "app/edition.h"

#include <CLI/CLI.hpp>

namespace quorvel {

bool readOptions(int argc, char* argv[], Options& options, int& exitStatus)
{
    CLI::App app("Configures and tests CCD plumb-line readouts on a serial bus.");
    std::vector<std::string> ports;
    app.add_option("--port", ports,
                   "Device to put first in the port list (repeatable): a path such as /dev/ttyUSB0, or "
                   "tcp:host:port")
        ->take_all()
        ->allow_extra_args(false);
    app.add_option("--folder", options.folder, "Folder of readme.txt and of the calibration files");
    app.add_flag_callback(
        "--no-journal", [&options] { options.journal = false; }, "Do not book what is set and deleted");
    app.add_flag("--read-only", options.readOnly, "Send nothing that would change a readout");
    app.add_option("--trace", options.trace,
                   "Append the traffic on the bus to this file, one JSON object a line");
    app.add_flag("--demo", options.demo, "Start a simulated bus and put it first in the port list");
    app.set_version_flag("--version", std::string("QUORVEL V" QUORVEL_VERSION " ") + kEdition);
    app.allow_extras();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        exitStatus = app.exit(error) == 0 ? 0 : kWrongUsage;
        return false;
    }
    for (const auto& port : ports) {
        options.ports << QString::fromLocal8Bit(port.c_str());
    }
    options.rest = app.remaining();
    return true;
}

} // namespace quorvel
