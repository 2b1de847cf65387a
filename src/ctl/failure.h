#pragma once

#include "line/conclusion.h"
#include "link/transaction.h"

#include <string_view>

/// How a command line ends: the exit statuses, the same for all commands, and the kinds of failure behind them, which
/// answers in JSON name.
namespace quorvel::ctl {

/// A signal that asked for the end gives 128 and its number instead.
enum class ExitStatus {
    Done = 0,
    Failed = 1,    ///< whatever is none of the others
    Usage = 2,     ///< the command line is wrong; nothing was sent
    Port = 3,      ///< missing, in use, lost
    NoAnswer = 4,  ///< nothing came from the readout, or from the bus
    BadAnswer = 5, ///< an answer that is short, garbled or not of its form
    Refused = 6,   ///< confirmation missing, file exists, read-only, not safe
};

/// What can go wrong, in the order of kFailures.
enum class Failure {
    Failed,
    File,
    Output,
    Ended,
    Usage,
    NoPort,
    PortNotOpened,
    PortLost,
    Silent,
    Short,
    Garbled,
    Unconfirmed,
    NeedsYes,
    Exists,
    ReadOnly,
    Unsafe,
};

struct FailureRow {
    Failure failure;
    ExitStatus status;
    std::string_view kind; ///< in JSON
    std::string_view meaning;
};

inline constexpr FailureRow kFailures[] = {
    {Failure::Failed, ExitStatus::Failed, "failed", "what no other kind names"},
    {Failure::File, ExitStatus::Failed, "file", "a file cannot be read or written, or is not of its form"},
    {Failure::Output, ExitStatus::Failed, "output", "the answer cannot be written; seen on stderr only"},
    {Failure::Ended, ExitStatus::Failed, "ended", "the program was asked to end meanwhile"},
    {Failure::Usage, ExitStatus::Usage, "usage", "the command line is wrong; nothing was sent"},
    {Failure::NoPort, ExitStatus::Port, "noPort", "there is no port"},
    {Failure::PortNotOpened, ExitStatus::Port, "portNotOpened",
     "the port does not exist, is in use or may not be used"},
    {Failure::PortLost, ExitStatus::Port, "portLost", "the port vanished meanwhile"},
    {Failure::Silent, ExitStatus::NoAnswer, "silent", "nothing answered"},
    {Failure::Short, ExitStatus::BadAnswer, "short", "only part of the answer came"},
    {Failure::Garbled, ExitStatus::BadAnswer, "garbled", "the answer does not have its form"},
    {Failure::Unconfirmed, ExitStatus::BadAnswer, "unconfirmed",
     "the readout did not repeat what was set, or holds something else"},
    {Failure::NeedsYes, ExitStatus::Refused, "needsYes", "the confirmation is missing"},
    {Failure::Exists, ExitStatus::Refused, "exists", "the file exists"},
    {Failure::ReadOnly, ExitStatus::Refused, "readOnly", "only reading is allowed"},
    {Failure::Unsafe, ExitStatus::Refused, "unsafe", "something would be lost, or go to the wrong readout"},
};

const FailureRow& rowOf(Failure failure);

/// What is wrong with an exchange that is not what its caller needs. This is the one place that tells.
Failure failureOf(const link::Exchange& exchange);
/// True when nothing is wrong with it as far as it can be told without knowing the command.
bool isWell(const link::Exchange& exchange);

/// What a diagnosis that found this fault counts as. Not for what line::isWell().
Failure failureOf(line::Fault fault);

} // namespace quorvel::ctl
