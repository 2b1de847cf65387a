#pragma once

#include "autoread/record_file.h"

/// The two kinds of files that a download can write.
namespace quorvel::autoread {

inline constexpr auto kTableName = "data";

/// How one kind of file is made, opened and read back.
struct TableFormat {
    /// Makes the file with its empty table. Fails, leaving nothing, when anything of that name exists.
    jet::Status (*makeEmpty)(const std::filesystem::path& path, const RecordLayout& layout);
    /// Opens what makeEmpty() made.
    jet::Result<std::unique_ptr<RecordSink>> (*open)(const std::filesystem::path& path,
                                                     const RecordLayout& layout);
    /// All its rows; see readRecordFile().
    jet::Result<RecordTable> (*read)(const std::filesystem::path& path);
};

extern const TableFormat kMdbFormat;
extern const TableFormat kCsvFormat;

/// The layout that has these columns, in this order; nothing when none has.
std::optional<RecordLayout> layoutOfColumns(const std::vector<std::string>& columns);
/// Why a file is not one of ours.
jet::Failure anotherTable(const std::filesystem::path& path);

} // namespace quorvel::autoread
