#pragma once

#include "jet/result.h"
#include "protocol/record.h"

#include <filesystem>
#include <memory>
#include <vector>

/// The file that a download writes: table `data` with `time`, `x`, `y` and, for the three-direction readout, `z1`
/// and `z2`. A name that ends in ".csv" (either case) gives the same table as text: a header row, ISO 8601 times,
/// decimal points, lines ended by a line feed. Any other name gives an Access database. A field of a record that is
/// missing is Null in the database and empty in the text.
namespace quorvel::autoread {

using protocol::kReadings;
using protocol::Record;
using protocol::RecordLayout;

/// Where the records of a download go, one after the other.
class RecordSink {
public:
    RecordSink() = default;
    RecordSink(const RecordSink&) = delete;
    RecordSink& operator=(const RecordSink&) = delete;
    virtual ~RecordSink() = default;

    /// Appends a record. When it succeeds the record is on the disk, whatever happens to the program or the
    /// machine. When it fails (disk full, disk gone) the earlier records stay as they are.
    virtual jet::Status append(const Record& record) = 0;

    /// Ends the file.
    virtual jet::Status close() = 0;
};

/// Whether a file that stands under the chosen name gives way to the new one.
enum class Existing { Keep, Replace };

/// A file that has just been made.
struct NewFile {
    std::unique_ptr<RecordSink> sink;
    std::filesystem::path
        keptOld; ///< copy of the file that gave way, dated, beside the new one; empty: there was none
};

/// Makes the file with its empty table and opens it for records. With Existing::Replace the old file is kept beside it as
/// a dated copy ("a.2024-05-17.mdb"), which the caller removes when the new one holds all its records, and is then
/// replaced in one step.
///
/// @return fails, leaving what was there, when the folder is missing or cannot be written, when the disk is full,
///         when the name belongs to something else than a file (a folder, a device), when the old file is
///         write-protected or open in another program, and with Existing::Keep when anything of that name exists.
jet::Result<NewFile> createRecordFile(const std::filesystem::path& path, const RecordLayout& layout,
                                      Existing existing);

/// Removes the copy of a file that gave way when the new one is complete.
/// @return where a copy stays; empty when none does.
std::filesystem::path settleOld(const std::filesystem::path& keptOld, bool complete);

/// What an earlier download left.
struct RecordTable {
    RecordLayout layout = protocol::kTwoDirections;
    std::vector<Record> rows{}; ///< in the order in which they were written
    bool tornRow = false;       ///< text only: a row without its end follows, which a power cut left
};

/// Reads a file of records back.
///
/// @return fails when the file is missing, cannot be read, is damaged or lacks rows, and when it holds another table than
///         a download writes.
jet::Result<RecordTable> readRecordFile(const std::filesystem::path& path);

/// Opens a file of records to go on behind its last row. A row without its end is taken off.
///
/// @param layout  that of its columns, as readRecordFile() told it.
/// @return        fails when the file is missing, write-protected, open in another program, or damaged.
jet::Result<std::unique_ptr<RecordSink>> openRecordFile(const std::filesystem::path& path,
                                                        const RecordLayout& layout);

/// By which a file is known again: a file that was replaced, changed or removed has another one.
struct FileStamp {
    std::uintmax_t size = 0;
    std::filesystem::file_time_type changed;

    bool operator==(const FileStamp&) const = default;
};

/// @return nothing when there is no such file.
std::optional<FileStamp> stampOf(const std::filesystem::path& path);

} // namespace quorvel::autoread
