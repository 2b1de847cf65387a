#include "autoread/record_file.h"

#include "autoread/table_format.h"
#include "files/disk.h"
#include "files/name.h"
#include "files/replace.h"

#include <algorithm>

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

jet::Result<std::unique_ptr<RecordSink>> createRecordFile(const fs::path& path, const RecordLayout& layout,
                                                          Existing existing)
{
    const auto& format = formatOf(path);
    const auto makeEmpty = [&](const fs::path& name) { return format.makeEmpty(name, layout); };
    if (existing == Existing::Replace) {
        if (const auto replaced = files::replaceFile(path, makeEmpty); !replaced) return replaced.failure();
    } else {
        if (const auto made = makeEmpty(path); !made) return made.failure();
        files::flushFolderOf(path);
    }
    return format.open(path, layout);
}

} // namespace quorvel::autoread
