#pragma once

#include "link/bench.h"
#include "link/clock.h"
#include "link/gate.h"
#include "link/module1.h"
#include "link/mscomm.h"
#include "link/portlist.h"
#include "main/form1.h"
#include "main/inputfilter.h"
#include "main/qtmessages.h"

namespace quorvel {

/// All that one run of the program consists of, wired together.
struct Workplace {
    /// @param ports   devices that come first in the port list.
    /// @param folder  the program's own folder.
    Workplace(const QStringList& ports, const std::filesystem::path& folder, const QString& edition);

    link::Bench bench;
    link::PortList ports;
    link::SystemClock clock;
    link::MSComm mscomm1;
    link::Module1 module1;
    link::Gate gate;
    InputFilter filter;
    QtMessages messages;
    Form1 form1;
};

} // namespace quorvel
