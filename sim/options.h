#pragma once

#include "sim/bus.h"
#include "sim/settings.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvelsim {

/// What the command line asks for.
struct Options {
    std::map<int, const ReadoutType*> readouts; ///< by address
    std::map<int, RingShape> rings;             ///< by address
    std::vector<std::string> faults;
    std::vector<std::string> settings; ///< "ADDRESS KEY VALUE"
    std::string bitErrors;             ///< "RATE[,SEED]"; empty: none
    std::string tcp;                   ///< "host:port"; empty: a pseudo-terminal
    bool fast = false;
    bool control = true; ///< lines on standard input
    std::uint64_t seed = 1;
    std::optional<CivilSeconds>
        clock; ///< what the readouts' clocks show at the start; the PC's time if empty
};

/// Reads the command line.
/// @return the exit status when the program ends here (help was shown, or the usage was wrong: 2, with the
///         reason on stderr); nothing when it goes on.
std::optional<int> readOptions(int argc, const char* const* argv, Options& options);

/// "5:A" or "1-249:A".
/// @return the reason in words when the text is neither; empty when its readouts were added.
std::string addReadouts(std::string_view text, std::map<int, const ReadoutType*>& readouts);

/// "5:1000,998,2".
std::string addRing(std::string_view text, std::map<int, RingShape>& rings);

/// The bus with its readouts, rings, settings and faults.
/// @return the reason in words when one of them asks for something that is not there.
std::string fillBus(const Options& options, Bus& bus);

} // namespace quorvelsim
