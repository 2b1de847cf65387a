#pragma once

#include "calibration/judgement.h"
#include "calibration/ownership.h"
#include "calibration/recordfile.h"
#include "calibration/tablefile.h"
#include "jet/result.h"

#include <filesystem>
#include <string>

namespace quorvel::calibration {

/// The working file of a direction and the record beside it, as they were read or written last, and what they are worth.
class RecordView {
public:
    RecordView(const std::filesystem::path& folder, const DirectionRow& direction)
        : direction_(direction), table_(folder / direction.file), file_(folder / direction.file, direction)
    {}

    const DirectionRow& direction() const { return direction_; }
    const std::filesystem::path& workingFile() const { return table_.path(); }

    /// Reads both files. A missing one is empty. Fails when the working file is there and cannot be read; what there is of
    /// the record is read all the same.
    jet::Status load()
    {
        file_.load();
        return table_.load();
    }

    const RecordData& record() const { return file_.data(); }
    const std::filesystem::path& recordFile() const { return file_.path(); }
    /// Why the record beside the working file cannot be used; empty when it can.
    const std::string& recordTrouble() const { return file_.trouble(); }
    /// False while record() holds a change that could not be written; load() drops it.
    bool isRecordWritten() const { return file_.isWritten(); }
    /// The points of the working file.
    const Records& table() const { return table_; }
    RunJudged judge(RunKind kind) const { return judgeRun(record(), kind, table(), direction_); }
    Ownership ownership() const { return ownershipOf(record(), table(), direction_); }
    /// What stands against sending the points to this readout; empty for nothing.
    QString whyNotTheirs(int address) const { return calibration::whyNotTheirs(ownership(), address); }

protected:
    const DirectionRow& direction_; // NOLINT(cppcoreguidelines-non-private-member-variables-in-classes)
    TableFile table_;               // NOLINT(cppcoreguidelines-non-private-member-variables-in-classes)
    RecordFile file_;               // NOLINT(cppcoreguidelines-non-private-member-variables-in-classes)
};

} // namespace quorvel::calibration
