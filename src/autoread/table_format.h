#pragma once

#include "autoread/record_file.h"

/// The two kinds of files that a download can write.
namespace quorvel::autoread {

inline constexpr auto kTableName = "data";
inline constexpr auto kTimeField = "time";

/// How one kind of file is made and opened.
struct TableFormat {
    /// Makes the file with its empty table. Fails, leaving nothing, when anything of that name exists.
    jet::Status (*makeEmpty)(const std::filesystem::path& path, const RecordLayout& layout);
    /// Opens what makeEmpty() made.
    jet::Result<std::unique_ptr<RecordSink>> (*open)(const std::filesystem::path& path,
                                                     const RecordLayout& layout);
};

extern const TableFormat kMdbFormat;
extern const TableFormat kCsvFormat;

} // namespace quorvel::autoread
