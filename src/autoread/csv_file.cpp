#include "autoread/table_format.h"
#include "files/disk.h"
#include "files/name.h"
#include "jet/recordset.h"
#include "text/number.h"

#include <QFile>

#include <cerrno>
#include <system_error>

namespace quorvel::autoread {

namespace {

std::string headerRow(const RecordLayout& layout)
{
    std::string row(protocol::kTimeName);
    for (std::size_t i = 0; i < layout.readings; ++i) {
        row.append(",").append(kReadings[i].field);
    }
    return row + "\n";
}

std::string rowOf(const Record& record, const RecordLayout& layout)
{
    std::string row = record.time ? record.time->iso() : std::string();
    for (std::size_t i = 0; i < layout.readings; ++i) {
        const auto& reading = record.readings[i];
        row += "," + (reading ? jet::Value(*reading).text() : std::string());
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

    /// Takes off what follows the last line end: half a row, which a power cut left.
    jet::Status cutTornRow(qint64 whole)
    {
        if (file_.size() == whole || file_.resize(whole)) return {};
        return failed("could not be written", ". Make room on the disk or choose another one.");
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
        // a row of which only a part was taken is no error to the file
        const auto why = file_.error() == QFileDevice::NoError ? std::string("there was room for a part only")
                                                               : file_.errorString().toStdString();
        return {file_.fileName().toStdString() + " " + what + ": " + why + next};
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

/// All of a file. Fails when it cannot be read.
jet::Result<std::string> contentOf(const std::filesystem::path& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return jet::Failure{files::inWords(path) + " could not be read: " + file.errorString().toStdString() +
                            ". Choose another file."};
    }
    auto content = file.readAll().toStdString();
    if (file.error() == QFileDevice::NoError) return content;
    return jet::Failure{files::inWords(path) + " could not be read: " + file.errorString().toStdString() +
                        "."};
}

std::size_t wholeLength(const std::string& content) { return content.rfind('\n') + 1; }

jet::Result<std::unique_ptr<RecordSink>> openCsv(const std::filesystem::path& path,
                                                 const RecordLayout& layout)
{
    const auto content = contentOf(path);
    if (!content) return content.failure();
    auto file = std::make_unique<CsvFile>(path, layout);
    if (auto opened = file->open(QIODevice::Append); !opened) return opened.failure();
    if (auto cut = file->cutTornRow(static_cast<qint64>(wholeLength(*content))); !cut) return cut.failure();
    return std::unique_ptr<RecordSink>(std::move(file));
}

/// Ours have no quotes.
std::vector<std::string> cellsOf(std::string_view line)
{
    if (line.ends_with('\r')) line.remove_suffix(1);
    std::vector<std::string> cells;
    auto comma = line.find(',');
    for (; comma != std::string_view::npos; comma = line.find(',')) {
        cells.emplace_back(line.substr(0, comma));
        line.remove_prefix(comma + 1);
    }
    cells.emplace_back(line);
    return cells;
}

/// "2024-02-29T23:59:59"
std::optional<jet::Date> timeIn(const std::string& cell)
{
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    if (cell.size() != kForm.size()) return std::nullopt;
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        const bool isDigit = cell[i] >= '0' && cell[i] <= '9';
        if (kForm[i] == '0' ? !isDigit : cell[i] != kForm[i]) return std::nullopt;
    }
    const auto number = [&cell](std::size_t at, std::size_t count) {
        return static_cast<int>(text::integerOf(cell.substr(at, count)));
    };
    return jet::Date::of(
        {number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2), number(17, 2)});
}

/// A row of a file; nothing when it is none.
std::optional<Record> recordOf(std::string_view line, const RecordLayout& layout)
{
    const auto cells = cellsOf(line);
    if (cells.size() != layout.readings + 1) return std::nullopt;
    Record record{timeIn(cells[0]), {}};
    bool right = record.time.has_value() || cells[0].empty();
    for (std::size_t i = 0; i < layout.readings; ++i) {
        const auto& cell = cells[i + 1];
        if (text::isNumber(cell)) record.readings[i] = protocol::asReading(text::Val(cell));
        right = right && (record.readings[i].has_value() || cell.empty());
    }
    return right ? std::optional(record) : std::nullopt;
}

jet::Failure noRow(const std::filesystem::path& path, int line)
{
    return {files::inWords(path) + ", line " + text::general(line) +
            ", is not a row that a download writes. Was the file changed by another program? Choose another "
            "file."};
}

jet::Result<RecordTable> readCsv(const std::filesystem::path& path)
{
    const auto content = contentOf(path);
    if (!content) return content.failure();
    std::string_view rest(*content);
    rest = rest.substr(0, wholeLength(*content));
    RecordTable table{.tornRow = rest.size() < content->size()};
    for (int line = 1; !rest.empty(); ++line) {
        const auto row = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(row.size() + 1);
        if (line == 1) {
            const auto layout = layoutOfColumns(cellsOf(row));
            if (!layout) return anotherTable(path);
            table.layout = *layout;
        } else if (const auto record = recordOf(row, table.layout)) {
            table.rows.push_back(*record);
        } else {
            return noRow(path, line);
        }
    }
    if (wholeLength(*content) == 0) return anotherTable(path);
    return table;
}

} // namespace

const TableFormat kCsvFormat{makeEmptyCsv, openCsv, readCsv};

} // namespace quorvel::autoread
