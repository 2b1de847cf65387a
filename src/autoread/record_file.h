#pragma once

#include "jet/result.h"
#include "protocol/record.h"

#include <filesystem>
#include <memory>

/// The file that a download writes: table `data` with `time`, `x`, `y` and, for the three-direction readout, `z1`
/// and `z2`. A name that ends in ".csv" (either case) gives the same table as text: a header row, ISO 8601 times,
/// decimal points, lines ended by a line feed. Any other name gives an Access database.
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

/// Makes the file with its empty table and opens it for records. With Existing::Replace the old file stays as it
/// is until the new one is complete, and is then replaced in one step.
///
/// @return fails, leaving what was there, when the folder is missing or cannot be written, when the disk is full,
///         when the name belongs to something else than a file (a folder, a device), when the old file is
///         write-protected or open in another program, and with Existing::Keep when anything of that name exists.
jet::Result<std::unique_ptr<RecordSink>> createRecordFile(const std::filesystem::path& path,
                                                          const RecordLayout& layout, Existing existing);

} // namespace quorvel::autoread
