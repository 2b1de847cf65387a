#pragma once

namespace CLI {
class App;
}

/// `quorvelctl`: the transactions of the windows for scripts and for machines without a display. Data goes to
/// stdout, words to stderr; the exit statuses are in ctl/failure.h.
namespace quorvel::ctl {

class Console;

/// Runs one command line. @return the exit status, without regard to signals.
int runCommandLine(Console& console, int argc, const char* const argv[]);

/// main() of `quorvelctl` and `quorvelctl-factory`.
/// @param edition  "USER" or "FACTORY".
int runControl(int argc, char* argv[], const char* edition);

// Each adds its subcommands to the command line; their callbacks do the work and report failures to the
// console.
void addAutoreadCommands(CLI::App& app, Console& console);    ///< auto
void addBusCommands(CLI::App& app, Console& console);         ///< ports, read
void addCalibrationCommands(CLI::App& app, Console& console); ///< calibrate, stitching: factory edition only
void addGrayscaleCommands(CLI::App& app, Console& console);   ///< grayscale
void addLineCommands(CLI::App& app, Console& console);        ///< search, diagnose
void addStoredCommands(CLI::App& app, Console& console);      ///< ring, download, check, clear
void addSettingsCommands(CLI::App& app, Console& console);    ///< settings, settings save, settings restore
void addSettingCommands(CLI::App& app, Console& console); ///< offset, reference, feature, invert, swap ...
void addMdbCommand(CLI::App& app, Console& console);      ///< mdb
void addRawCommand(CLI::App& app, Console& console);      ///< raw

/// What `search` does, and `address` without a new one: prints the addresses that answer.
void searchBus(Console& console);

void addWatchCommand(CLI::App& app, Console& console); ///< watch

/// The option whose command draws, and the command that always does.
inline constexpr auto kChartOption = "--chart";
inline constexpr auto kRecordCommand = "record";

} // namespace quorvel::ctl
