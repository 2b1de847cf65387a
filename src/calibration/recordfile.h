#pragma once

#include "calibration/recorddata.h"

#include <ctime>
#include <filesystem>
#include <functional>
#include <string>

namespace quorvel::calibration {

/// The record beside a working file: "XDirection.record.json" beside "XDirection.mdb". It is read before each change and
/// written after it, so that several programs may have a part in it.
class RecordFile {
public:
    RecordFile(const std::filesystem::path& working, const DirectionRow& direction);

    const std::filesystem::path& path() const { return path_; }
    /// As it was read last; empty when there is none, or none that can be used.
    const RecordData& data() const { return data_; }
    /// Why the file that is there cannot be used, as a sentence; empty when it can or there is none.
    const std::string& trouble() const { return trouble_; }
    /// False while data() holds a change that could not be written.
    bool isWritten() const { return written_; }

    /// Reads the file.
    void load();

    /// Reads the file, lets `change` work on what it holds, and writes it in one step. A file that cannot be used is kept
    /// under the day of `now`. Fails when it cannot be written; data() holds the change all the same.
    files::Status change(const std::function<void(RecordData&)>& change,
                         std::time_t now = std::time(nullptr));

private:
    const DirectionRow& direction_;
    std::filesystem::path path_;
    RecordData data_;
    std::string trouble_;
    bool written_ = true;
};

/// Notes in the record what the measured run got from elsewhere than the record's own window: one reading of a point, in
/// the place of what was taken there before.
files::Status noteMeasured(RecordFile& file, int point, Take take);

/// Keeps a copy of a file under the day of `now`, unless a copy of that day is the same.
/// @return its name; empty when there is no file. Fails when the copy cannot be written.
files::Result<std::filesystem::path> keepDatedCopy(const std::filesystem::path& file,
                                                   std::time_t now = std::time(nullptr));

} // namespace quorvel::calibration
