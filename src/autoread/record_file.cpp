#include "autoread/record_file.h"

#include "autoread/table_format.h"
#include "files/disk.h"
#include "files/name.h"
#include "files/replace.h"

#include <algorithm>
#include <ctime>

namespace quorvel::autoread {

namespace {

namespace fs = std::filesystem;

char lowerCase(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

const TableFormat& formatOf(const fs::path& path)
{
    auto extension = files::inWords(path.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(), lowerCase);
    return extension == ".csv" ? kCsvFormat : kMdbFormat;
}

} // namespace

jet::Result<NewFile> createRecordFile(const fs::path& path, const RecordLayout& layout, Existing existing)
{
    const auto& format = formatOf(path);
    const auto makeEmpty = [&](const fs::path& name) { return format.makeEmpty(name, layout); };
    NewFile made;
    if (existing == Existing::Replace) {
        const auto replaced =
            files::replaceFile(path, makeEmpty, {.keepAs = files::dateMark(std::time(nullptr))});
        if (!replaced) return replaced.failure();
        made.keptOld = *replaced;
    } else {
        if (const auto done = makeEmpty(path); !done) return done.failure();
        files::flushFolderOf(path);
    }
    auto sink = format.open(path, layout);
    if (!sink) {
        return jet::Failure{sink.error() + (made.keptOld.empty()
                                                ? std::string()
                                                : " The file that was there before is kept as " +
                                                      files::inWords(made.keptOld) + ".")};
    }
    made.sink = std::move(*sink);
    return made;
}

fs::path settleOld(const fs::path& keptOld, bool complete)
{
    std::error_code ignored;
    return complete && !keptOld.empty() && fs::remove(keptOld, ignored) ? fs::path() : keptOld;
}

jet::Result<RecordTable> readRecordFile(const fs::path& path) { return formatOf(path).read(path); }

jet::Result<std::unique_ptr<RecordSink>> openRecordFile(const fs::path& path, const RecordLayout& layout)
{
    return formatOf(path).open(path, layout);
}

std::optional<FileStamp> stampOf(const fs::path& path)
{
    std::error_code error;
    FileStamp stamp;
    stamp.size = fs::file_size(path, error);
    if (!error) stamp.changed = fs::last_write_time(path, error);
    return error ? std::nullopt : std::optional(stamp);
}

std::optional<RecordLayout> layoutOfColumns(const std::vector<std::string>& columns)
{
    for (const auto& layout : {protocol::kTwoDirections, protocol::kThreeDirections}) {
        std::vector<std::string> awaited{std::string(protocol::kTimeName)};
        for (std::size_t i = 0; i < layout.readings; ++i) {
            awaited.emplace_back(kReadings[i].field);
        }
        if (columns == awaited) return layout;
    }
    return std::nullopt;
}

jet::Failure anotherTable(const fs::path& path)
{
    return {files::inWords(path) + " does not hold stored readings: they are a table \"data\" with time, x, "
                                   "y and, for type C, z1 and z2. "
                                   "Choose the file of an earlier download."};
}

} // namespace quorvel::autoread
