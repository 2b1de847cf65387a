#pragma once

#include "files/result.h"

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace quorvel::site {

/// How a readout has answered since the start of the program, whoever asked it.
struct LineState {
    std::int64_t asked = 0;
    std::int64_t answered = 0; ///< of them whole
    double meanMs = 0; ///< from the end of the question to the end of the answer; 0 when nothing was answered
};

/// A line of the journal of writes.
struct ChangeMade {
    QString time; ///< ISO 8601
    int address = 0;
    QString what;    ///< "Set the offset of X to +1.50000"
    QString before;  ///< the value that was there; empty: not known
    QString outcome; ///< "complete", "silent" ...
    bool confirmed = false;
    QString who; ///< user and program
};

/// What was set and deleted, as the journal has it.
struct ChangesMade {
    std::vector<ChangeMade> made; ///< in order of time
    int unread = 0;               ///< lines that might belong to them and cannot be read
};

/// What the window takes from other rooms. The program hands it in.
struct Surroundings {
    std::function<std::vector<int>()> found;    ///< addresses of the latest search
    std::function<LineState(int address)> line; ///< nothing asked yet: all 0
    /// What was set and deleted since a moment, by all our programs. Fails with the reason why it is not known.
    std::function<files::Result<ChangesMade>(const QDateTime& since)> changes;
    QString person; ///< who works at the machine
};

} // namespace quorvel::site
