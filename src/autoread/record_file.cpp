#include "autoread/record_file.h"

#include "autoread/disk.h"
#include "autoread/table_format.h"
#include "jet/replaceable.h"

#include <algorithm>
#include <system_error>

namespace quorvel::autoread {

namespace {

namespace fs = std::filesystem;

char lowerCase(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// A path for people, and for comparing: UTF-8, which on some platforms string() is not.
std::string utf8(const fs::path& path)
{
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

const TableFormat& formatOf(const fs::path& path)
{
    auto extension = utf8(path.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(), lowerCase);
    return extension == ".csv" ? kCsvFormat : kMdbFormat;
}

/// A name in the same folder that nothing has: the new file grows there until it takes the old one's place.
fs::path unusedNameBeside(const fs::path& path)
{
    std::error_code error;
    for (int number = 1;; ++number) {
        auto name = path;
        name += ".new" + std::to_string(number);
        if (!fs::exists(fs::symlink_status(name, error))) return name;
    }
}

jet::Status makeInPlaceOf(const fs::path& path, const RecordLayout& layout)
{
    if (auto may = jet::replaceable(path); !may) return may;
    const auto spare = unusedNameBeside(path);
    if (auto made = formatOf(path).makeEmpty(spare, layout); !made) return made;
    std::error_code error;
    fs::rename(spare, path, error);
    if (error) {
        std::error_code ignored;
        fs::remove(spare, ignored);
        return jet::Failure{utf8(path) + " could not be overwritten: " + error.message() +
                            ". Choose another name."};
    }
    return {};
}

} // namespace

jet::Result<std::unique_ptr<RecordSink>> createRecordFile(const fs::path& path, const RecordLayout& layout,
                                                          Existing existing)
{
    const auto& format = formatOf(path);
    const auto made =
        existing == Existing::Replace ? makeInPlaceOf(path, layout) : format.makeEmpty(path, layout);
    if (!made) return made.failure();
    flushFolderOf(path);
    return format.open(path, layout);
}

} // namespace quorvel::autoread
