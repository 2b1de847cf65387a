#pragma once

#include <functional>

namespace CLI {
class App;
}

/// `quorvelctl`: the transactions of the windows for scripts and for machines without a display. Data goes to
/// stdout, words to stderr; the exit statuses are in ctl/failure.h.
namespace quorvel::ctl {

class Console;

/// Adds subcommands to the command line; their callbacks do the work and report failures to the console.
using AddCommands = std::function<void(CLI::App& app, Console& console)>;

/// Runs one command line. @return the exit status, without regard to signals.
/// @param more  adds what only this edition has.
int runCommandLine(Console& console, int argc, const char* const argv[], const AddCommands& more = {});

/// main() of `quorvelctl` and `quorvelctl-factory`, behind the application object.
/// @param edition  "USER" or "FACTORY".
int runControl(int argc, char* argv[], const char* edition, const AddCommands& more = {});

void addAutoreadCommands(CLI::App& app, Console& console); ///< auto
void addBusCommands(CLI::App& app, Console& console);      ///< ports, read
void addCalibrationCommands(CLI::App& app,
                            Console& console);              ///< calibrate, stitching: for the factory edition
void addGrayscaleCommands(CLI::App& app, Console& console); ///< grayscale
void addLineCommands(CLI::App& app, Console& console);      ///< search, diagnose
void addStoredCommands(CLI::App& app, Console& console);    ///< ring, download, check, clear
void addSettingsCommands(CLI::App& app, Console& console);  ///< settings, settings save, settings restore
void addSettingCommands(CLI::App& app, Console& console);   ///< offset, reference, feature, invert, swap ...
void addMdbCommand(CLI::App& app, Console& console);        ///< mdb
void addRawCommand(CLI::App& app, Console& console);        ///< raw
void addSiteCommand(CLI::App& app, Console& console);       ///< site create
void addWatchCommand(CLI::App& app, Console& console);      ///< watch

/// What `search` does, and `address` without a new one: prints the addresses that answer.
void searchBus(Console& console);

} // namespace quorvel::ctl
