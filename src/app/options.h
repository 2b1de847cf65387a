#pragma once

#include <QStringList>

#include <string>
#include <vector>

namespace quorvel {

/// What the command line of `quorvel` and `quorvel-factory` asks for.
struct Options {
    QStringList ports;             ///< --port, in the order given
    std::string folder;            ///< --folder; empty: the executable's, or a per-user one
    bool demo = false;             ///< --demo
    bool journal = true;           ///< not --no-journal
    bool readOnly = false;         ///< --read-only
    std::string trace;             ///< --trace; empty: none
    std::vector<std::string> rest; ///< what only Qt may know
};

/// Exit status of a command line that is wrong.
inline constexpr int kWrongUsage = 2;

/// Reads the command line.
/// @param exitStatus  set when the program is to end at once (help, version, a wrong value).
/// @return true when the program is to go on.
bool readOptions(int argc, char* argv[], Options& options, int& exitStatus);

/// main() of both programs.
int runProgram(int argc, char* argv[]);

} // namespace quorvel
