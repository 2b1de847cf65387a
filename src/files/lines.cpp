#include "files/lines.h"

#include "files/name.h"

#include <fstream>
#include <system_error>

namespace quorvel::files {

namespace {

namespace fs = std::filesystem;

Failure linesNotWritten(const fs::path& path, const std::error_code& error)
{
    return {inWords(path) + " could not be written: " + wordsOf(error) +
            ". Make room, or choose another folder or name."};
}

} // namespace

bool isCutOff(const fs::path& path)
{
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) == 0 || error) return false;
    std::ifstream file(path, std::ios::binary);
    file.seekg(-1, std::ios::end);
    const int last = file.get();
    return file.good() && last != '\n';
}

Status LineFile::open(const fs::path& path)
{
    path_ = path;
    const bool cutOff = isCutOff(path);
    std::error_code error;
    wasEmpty_ = !fs::is_regular_file(path, error) || fs::file_size(path, error) == 0;
    error.clear();
    file_ = OpenFile(path, OpenFile::How::ToAppend, error);
    if (file_.isOpen() && cutOff) file_.write("\n", error);
    if (!error) return {};
    close();
    return linesNotWritten(path_, error);
}

Status LineFile::append(std::string_view lines)
{
    std::error_code unsized;
    const auto before = fs::file_size(path_, unsized);
    std::error_code error;
    file_.write(lines, error);
    if (!error) return {};
    std::error_code ignored;
    if (!unsized) fs::resize_file(path_, before, ignored);
    return linesNotWritten(path_, error);
}

Status LineFile::flush()
{
    std::error_code error;
    file_.flush(error);
    return error ? Status(linesNotWritten(path_, error)) : Status();
}

} // namespace quorvel::files
