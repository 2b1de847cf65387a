#pragma once

#include "autoread/book.h"
#include "line/health.h"
#include "line/journal.h"
#include "line/trace.h"
#include "line/trafficmodel.h"
#include "link/bench.h"
#include "link/clock.h"
#include "link/gate.h"
#include "link/module1.h"
#include "link/mscomm.h"
#include "link/portlist.h"
#include "main/form1.h"
#include "main/inputfilter.h"
#include "main/qtmessages.h"
#include "main/workplace.h"

#include <memory>

namespace quorvel {

/// What a test puts in the place of the machine's time and of Qt's boxes; null: the real thing.
struct StandIns {
    link::Clock* clock = nullptr;
    Messages* messages = nullptr;
};

/// All that one run of the program consists of, wired together.
struct Program {
    /// @param ports   devices that come first in the port list.
    /// @param folder  the program's own folder.
    /// @param help    the help text.
    Program(const QStringList& ports, const std::filesystem::path& folder, const std::filesystem::path& help,
            const QString& edition, const StandIns& standIns = {});
    ~Program();

    /// Books every set and deletion from now on.
    /// @param program  name of the program.
    void keepJournal(const QString& program);

    link::Bench bench;
    link::PortList ports;
    link::SystemClock clock;
    link::MSComm mscomm1;
    link::Module1 module1;
    link::Gate gate;
    line::TrafficModel traffic;
    line::Trace trace;
    line::Health health;
    std::unique_ptr<line::Journal> journal; ///< null when it is switched off
    autoread::Book book;                    ///< of stored readings and their files
    InputFilter filter;
    QtMessages messages;
    Workplace workplace;
    Form1 form1;

private:
    const Workplace& benchOf(const std::filesystem::path& folder, const std::filesystem::path& help,
                             const QString& edition);
};

} // namespace quorvel
