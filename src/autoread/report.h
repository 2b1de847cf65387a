#pragma once

#include "autoread/download.h"
#include "autoread/ring_state.h"

#include <QJsonObject>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::autoread {

/// Something that a reader of the file should know, with its place.
struct Finding {
    enum class Kind {
        Unreadable, ///< a field is empty
        Misfit,     ///< a reply was not the one asked for, and was stored all the same
        Gap,        ///< more time than the interval lies before this record
        Double,     ///< the record before has the same time
        Backward,   ///< the record before is later
    };
    Kind kind = Kind::Unreadable;
    int slot = 0;      ///< index of the record in the readout
    int row = 0;       ///< of the file, from 1
    std::string words; ///< what it is: "no number for x: \"XYZABCDE\""
};

/// What a download was and what became of it.
struct Report {
    int address = 0;
    std::string type; ///< "A" ... "D"; "C" whenever there are Z readings, never without
    std::filesystem::path file;
    bool continued = false; ///< the file had rowsBefore rows
    int rowsBefore = 0;
    bool verified = false; ///< each record was asked for until two replies agreed
    int expected = 0;      ///< records that were to be fetched
    int received = 0;      ///< records that are in the file by this download
    Ending ending = Ending::NotBegun;
    std::string reason;            ///< why it ended early, in words; empty for Complete and Stopped
    bool fileFailed = false;       ///< of NotBegun: the reason is the file, not the readout
    std::filesystem::path keptOld; ///< copy of the file that gave way; empty: removed, or there was none
    std::optional<jet::Date> firstTime, lastTime; ///< of what was received
    std::optional<int> interval;                  ///< seconds between two readings, as the readout says
    std::optional<ClockReading> clock;
    std::vector<Finding> findings; ///< in the order of the rows
    LineCounts line;
    std::optional<bool> safeToDelete; ///< what the latest check since said; missing: not checked

    int count(Finding::Kind kind) const;
    bool complete() const { return ending == Ending::Complete; }
};

/// The findings in what was stored, rows counted from `rowsBefore` + 1.
///
/// @param before    the row in front of the first; its time counts for the step between them.
/// @param interval  without it no gap is reported. A step as long as the one before or behind it is an interval that was
///                  set earlier, no gap.
std::vector<Finding> findingsIn(const std::vector<StoredRecord>& stored, int rowsBefore,
                                const std::optional<Record>& before, std::optional<int> interval);

/// Takes over what became of the download: ending, reason, what was received, findings by `report.interval`, the line.
/// @param before  the row in front of the first.
void fill(Report& report, const Outcome& outcome, const std::optional<Record>& before,
          const LineCounts& line);

/// "Row 12, record 0011: 3 h 0 min after the record before, instead of 1 h 0 min"
std::string text(const Finding& finding);

/// In one sentence: "300 of 300 records of readout 5 are in /home/x/a.mdb."
std::string summary(const Report& report);
/// As text of several lines, each ended by a line feed.
std::string text(const Report& report);
/// As JSON: address, type, file, continued, rowsBefore, expected, received, unreadable, complete,
/// ending, reason, first, last, findings [{kind, index, row, words}], gaps, doubles, backward, misfits, intervalSeconds, clock
/// {readout, pc, aheadSeconds}, verified, safeToDelete, line {questions, askedAgain, incomplete, misfits, disagreements,
/// noise}, keptOld.
QJsonObject json(const Report& report);

} // namespace quorvel::autoread
