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
    waiting_.push_back({day, lines});
    return writeWaiting();
}

files::Status ReadingLog::flush()
{
    if (auto written = writeWaiting(); !written) return written;
    if (!file_.isOpen()) return {};
    // What the file has taken is not written twice, whatever becomes of it.
    auto flushed = file_.flush();
    if (!flushed) file_.close();
    return flushed;
}

files::Status ReadingLog::writeWaiting()
{
    while (!waiting_.empty()) {
        if (auto written = write(waiting_.front()); !written) {
            file_.close();
            keepWithinLimit();
            return written;
        }
        waiting_.pop_front();
    }
    return {};
}

files::Status ReadingLog::write(const Lines& lines)
{
    const auto file = fileOf(lines.day);
    // Somebody may have moved the file away meanwhile: then a new one begins.
    const bool same = file_.isOpen() && file_.path() == file && file_.isStillThere();
    if (!same) {
        // a day has ended: its file is left whole
        if (file_.isOpen()) (void)file_.flush();
        if (auto opened = file_.open(file); !opened) return opened;
    }
    const auto text = !same && file_.wasEmpty() ? form_.header + lines.text : lines.text;
    return file_.append({text.constData(), static_cast<std::size_t>(text.size())});
}

void ReadingLog::keepWithinLimit()
{
    qsizetype size = 0;
    for (const auto& lines : waiting_)
        size += lines.text.size();
    while (size > kMostWaiting) {
        size -= waiting_.front().text.size();
        waiting_.pop_front();
    }
}

} // namespace quorvel::site
