#include "autoread/table_format.h"
#include "files/disk.h"
#include "jet/recordset.h"

#include <QFile>

#include <cerrno>
#include <system_error>

namespace quorvel::autoread {

namespace {

std::string headerRow(const RecordLayout& layout)
{
    std::string row = kTimeField;
    for (std::size_t i = 0; i < layout.readings; ++i) {
        row.append(",").append(kReadings[i].field);
    }
    return row + "\n";
}

std::string rowOf(const Record& record, const RecordLayout& layout)
{
    std::string row = record.time.iso();
    for (std::size_t i = 0; i < layout.readings; ++i) {
        row += "," + jet::Value(record.readings[i]).text();
    }
    return row + "\n";
}

class CsvFile final : public RecordSink {
public:
    CsvFile(const std::filesystem::path& path, const RecordLayout& layout) : file_(path), layout_(layout) {}

    jet::Status open(QIODevice::OpenMode mode)
    {
        if (file_.open(mode | QIODevice::WriteOnly | QIODevice::Unbuffered)) return {};
        return failed("could not be created", ". Choose another folder or name.");
    }

    jet::Status write(const std::string& row)
    {
        const auto before = file_.size();
        const auto size = static_cast<qint64>(row.size());
        const bool whole = file_.write(row.data(), size) == size;
        if (whole && files::flushToDisk(file_.handle())) return {};
        auto failure = whole
                           ? notFlushed()
                           : failed("could not be written", ". Make room on the disk or choose another one.");
        // Half a row would be read as a whole one.
        file_.resize(before);
        return failure;
    }

    jet::Status append(const Record& record) override
    {
        auto written = write(rowOf(record, layout_));
        if (written || !mayBeThere_) return written;
        return jet::Failure{written.error() + " " + jet::kRowMayBeThere};
    }

    jet::Status close() override
    {
        file_.close();
        return {};
    }

    /// Takes the file away again.
    void discard() { file_.remove(); }

private:
    // What a disk that fails to flush has taken is not known, whatever the file is cut to afterwards.
    jet::Failure notFlushed() const
    {
        return {file_.fileName().toStdString() +
                " could not be brought to the disk: " + std::generic_category().message(errno) +
                ". Make room or check the disk, then try again. " + jet::kRowMayBeThere};
    }

    jet::Failure failed(const char* what, const char* next) const
    {
        return {file_.fileName().toStdString() + " " + what + ": " + file_.errorString().toStdString() +
                next};
    }

    QFile file_;
    RecordLayout layout_;
    bool mayBeThere_ = false; ///< the text that failed to be written last
};

jet::Status makeEmptyCsv(const std::filesystem::path& path, const RecordLayout& layout)
{
    CsvFile file(path, layout);
    if (auto made = file.open(QIODevice::NewOnly); !made) return made;
    auto written = file.write(headerRow(layout));
    if (!written) file.discard();
    return written;
}

jet::Result<std::unique_ptr<RecordSink>> openCsv(const std::filesystem::path& path,
                                                 const RecordLayout& layout)
{
    auto file = std::make_unique<CsvFile>(path, layout);
    if (auto opened = file->open(QIODevice::Append); !opened) return opened.failure();
    return std::unique_ptr<RecordSink>(std::move(file));
}

} // namespace

const TableFormat kCsvFormat{makeEmptyCsv, openCsv};

} // namespace quorvel::autoread
