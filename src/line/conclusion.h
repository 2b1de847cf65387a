#pragma once

#include "line/findings.h"

#include <QString>

#include <string_view>

namespace quorvel::line {

/// The most likely fault. docs/line.md says which fault of the simulated bus leads to which.
enum class Fault {
    None,     ///< the readout answers as it should
    LineGood, ///< no readout was named; others answer
    PortClosed,
    PortLost,
    Stopped,      ///< the operator ended the test
    Echo,         ///< the adapter sends back what it sends; the answers follow
    EchoOnly,     ///< nothing follows
    Noise,        ///< characters come unasked
    NotAnAddress, ///< what was typed names no readout
    NothingAnswers,
    ReadoutSilent, ///< others answer
    SearchOnly,    ///< it answers the search and nothing else
    CommandSilent, ///< it answers another command
    SearchSilent,  ///< it answers all but the search
    SearchWrong,   ///< the search names addresses that do not answer
    Late,
    NowAndThen,
    BreaksOff,
    TooLong,
    Twice,
    NoiseBefore,
    Damaged,
    OtherCommand,
    OtherAddress,
    ShortReading, ///< 27 characters
    NoValue,
    AnotherReadout, ///< this one is well, another one is not
    HasZ,           ///< type C, but another one is chosen
    LacksZ,         ///< not of type C, which is chosen
};

/// What a test comes to, in words.
struct Conclusion {
    Fault fault = Fault::None;
    QString what;    ///< the most likely fault
    QString next;    ///< what to do
    QString unknown; ///< what cannot be told from here; may be empty
};

/// The most likely fault behind the findings. Asks nobody anything.
Conclusion conclude(const Findings& findings);

/// "readout silent": what documents and scripts call it.
std::string_view nameOf(Fault fault);

/// True when nothing stands in the way.
inline bool isWell(Fault fault) { return fault == Fault::None || fault == Fault::LineGood; }

} // namespace quorvel::line
