#include "calibration/recordfile.h"

#include "files/name.h"
#include "files/replace.h"

#include <QFile>
#include <QJsonDocument>

namespace quorvel::calibration {

namespace {

constexpr qint64 kLargestRecord = 64LL * 1024 * 1024; // bytes

bool haveSameContent(const std::filesystem::path& one, const std::filesystem::path& other)
{
    QFile first(one);
    QFile second(other);
    return first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly) &&
           first.size() == second.size() && first.readAll() == second.readAll();
}

} // namespace

RecordFile::RecordFile(const std::filesystem::path& working, const DirectionRow& direction)
    : direction_(direction), path_(working)
{
    path_.replace_extension(".record.json");
}

void RecordFile::load()
{
    data_ = {};
    trouble_.clear();
    written_ = true;
    if (!files::isThere(path_)) return;
    QFile file(path_);
    std::string why;
    if (!file.open(QIODevice::ReadOnly)) {
        why = file.errorString().toStdString();
    } else if (file.size() > kLargestRecord) {
        why = "it is too long";
    } else if (auto read = readRecord(file.readAll(), direction_); read) {
        data_ = std::move(*read);
    } else {
        why = read.error();
    }
    if (why.empty()) return;
    trouble_ = "The record " + files::inWords(path_) + " cannot be used: " + why +
               ". With the next entry a new one is begun, and this one is kept under the day's date.";
}

files::Status RecordFile::change(const std::function<void(RecordData&)>& change, std::time_t now)
{
    load();
    const bool unusable = !trouble_.empty();
    change(data_);
    const auto json = recordJson(data_, direction_);
    auto written = files::replaceContent(path_, QJsonDocument(json).toJson().toStdString(),
                                         {.keepAs = unusable ? files::dateMark(now) : std::string()});
    written_ = static_cast<bool>(written);
    if (!written) return written;
    trouble_.clear();
    data_.origin = json;
    return {};
}

files::Status noteMeasured(RecordFile& file, int point, Take take)
{
    if (point < 0 || point >= kPoints) return {};
    const auto now = take.at.toSecsSinceEpoch();
    return file.change(
        [&](RecordData& data) {
            data.run(RunKind::Measured)[static_cast<std::size_t>(point)] = {
                {Pass{std::nullopt, false, {std::move(take)}}}};
            data.settleAddress();
        },
        now);
}

files::Result<std::filesystem::path> keepDatedCopy(const std::filesystem::path& file, std::time_t now)
{
    if (!files::isThere(file)) return std::filesystem::path();
    const auto mark = files::dateMark(now);
    const auto begin = file.stem().concat("." + mark).native();
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path(), error)) {
        const auto name = entry.path().filename().native();
        const bool ofToday = name.compare(0, begin.size(), begin) == 0;
        if (ofToday && entry.path().extension() == file.extension() && haveSameContent(file, entry.path()))
            return entry.path();
    }
    const auto free = files::freeName(file, mark);
    const auto copied = files::replaceByCopy(file, free);
    if (!copied) return copied.failure();
    return free;
}

} // namespace quorvel::calibration
