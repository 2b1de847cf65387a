#include "site/readinglog.h"

namespace quorvel::site {

std::filesystem::path ReadingLog::fileOf(const QDate& day) const
{
    if (!form_.daily) return path_;
    auto name = path_.stem();
    name += "." + day.toString(Qt::ISODate).toStdString();
    name += path_.extension();
    return path_.parent_path() / name;
}

files::Status ReadingLog::append(const QDate& day, const QByteArray& lines)
{
    const auto file = fileOf(day);
    // Somebody may have moved the file away meanwhile: then a new one begins.
    const bool same = file_.isOpen() && file_.path() == file && file_.isStillThere();
    if (!same) {
        if (auto opened = file_.open(file); !opened) return opened;
    }
    const auto text = !same && file_.wasEmpty() ? form_.header + lines : lines;
    auto written = file_.append({text.constData(), static_cast<std::size_t>(text.size())});
    if (written) written = file_.flush();
    if (!written) file_.close();
    return written;
}

} // namespace quorvel::site
