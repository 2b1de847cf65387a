#include "autoread/check.h"

#include "files/name.h"
#include "protocol/answer.h"
#include "text/number.h"

#include <QJsonArray>

#include <algorithm>
#include <set>
#include <tuple>

namespace quorvel::autoread {

using namespace protocol;

namespace {

constexpr int kRetriesForPointers = 2;

/// A row that may be a record of the ring, and the record's place if it is known.
struct Candidate {
    Record row;
    std::optional<int> place;
};

bool isWhole(const Record& row, const RecordLayout& layout)
{
    const auto end = row.readings.begin() + static_cast<std::ptrdiff_t>(layout.readings);
    return row.time &&
           std::all_of(row.readings.begin(), end, [](const auto& each) { return each.has_value(); });
}

/// Of the readings, those that a row lacks have to be missing in the record, too.
bool saysNoMore(const Record& row, const Record& record)
{
    if (!row.time && record.time) return false;
    for (std::size_t i = 0; i < kMostReadings; ++i) {
        if (!row.readings[i] && record.readings[i]) return false;
    }
    return true;
}

std::string shownTime(const QDateTime& time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toStdString();
}

std::string listOf(const std::vector<std::filesystem::path>& files)
{
    std::string words;
    for (const auto& file : files) {
        words += (words.empty() ? "" : ", ") + files::inWords(file);
    }
    return words;
}

/// The comparison of files and ring, step by step; each step says why it is the last.
class Comparison {
public:
    Comparison(RecordReader& reader, CheckResult& result) : reader_(reader), result_(result) {}

    void run()
    {
        if (!readFiles() || !askForPointers()) return;
        if (result_.held == 0) return sayEmpty();
        search_.emplace(reader_, result_.pointers);
        if (!askForEnds() || !compare() || !askForGapsInRows() || !nothingWasTaken()) return;
        result_.safe = true;
        result_.words = "Safe to delete: all " + text::general(result_.held) + " records that readout " +
                        text::general(result_.address) + " holds are in " + listOf(result_.files) +
                        ", read back on " + shownTime(result_.at) + ".";
    }

private:
    bool no(const std::string& why)
    {
        result_.words = "Not safe to delete: " + why;
        return false;
    }

    bool readFiles()
    {
        for (const auto& file : result_.files) {
            auto table = readRecordFile(file);
            if (!table) return no(table.error());
            layout_ = table->layout;
            rows_.insert(rows_.end(), table->rows.begin(), table->rows.end());
        }
        return true;
    }

    bool askForPointers()
    {
        const auto& asking = reader_.asking();
        const auto asked =
            askPointers(reader_.module1(), reader_.addressDigits(),
                        {.retries = std::max(asking.retries, kRetriesForPointers), .stop = asking.stop});
        if (!asked) return no(asked.error());
        result_.pointers = *asked;
        result_.held = spanOf(*asked).count();
        return true;
    }

    void sayEmpty()
    {
        result_.safe = true;
        result_.words = "Readout " + text::general(result_.address) + " holds no records.";
    }

    bool askForEnds()
    {
        const auto& whole = search_->whole();
        const int next = search_->rising().end;
        const std::pair<int, Record*> ends[] = {{next < whole.end ? next : whole.first, &oldest_},
                                                {next - 1, &newest_},
                                                {whole.first, &first_},
                                                {whole.end - 1, &last_}};
        for (const auto& [place, end] : ends) {
            const auto record = search_->at(place);
            if (!record) return no(record.error());
            *end = *record;
        }
        const bool hasZ = reader_.layout() == kThreeDirections;
        if (result_.files.empty()) return no(missingText(result_.held));
        if (hasZ && layout_ == kTwoDirections)
            return no("the readout is of type C, and the file has no columns for Z.");
        return true;
    }

    // By time, and where a clock was set back, by the order of the rows.
    bool compare()
    {
        collectByTime();
        if (static_cast<int>(found_.size()) == result_.held && matches(found_.front().row, oldest_) &&
            matches(found_.back().row, newest_))
            return all();
        if (collectInOrder()) return all();
        result_.inFiles = std::min(static_cast<int>(found_.size()), result_.held - 1);
        return no(missingText(result_.held - result_.inFiles) + takenSinceText());
    }

    bool all()
    {
        result_.inFiles = result_.held;
        return true;
    }

    void collectByTime()
    {
        if (!oldest_.time || !newest_.time) return;
        std::set<std::tuple<double, decltype(Record::readings)>> different;
        for (const auto& row : rows_) {
            if (!row.time || row.time->serial < oldest_.time->serial ||
                row.time->serial > newest_.time->serial)
                continue;
            different.emplace(row.time->serial, row.readings);
        }
        for (const auto& [serial, readings] : different) {
            found_.push_back({{jet::Date{serial}, readings}, std::nullopt});
        }
    }

    bool collectInOrder()
    {
        const auto count = static_cast<std::size_t>(result_.held);
        for (std::size_t i = 0; i + count <= rows_.size(); ++i) {
            if (!matches(rows_[i], first_) || !matches(rows_[i + count - 1], last_)) continue;
            found_.clear();
            for (std::size_t j = 0; j < count; ++j) {
                found_.push_back({rows_[i + j], search_->whole().first + static_cast<int>(j)});
            }
            return true;
        }
        return false;
    }

    std::string missingText(int missing) const
    {
        return text::general(missing) + " of the " + text::general(result_.held) + " records that readout " +
               text::general(result_.address) + " holds are in no file" +
               (result_.files.empty() ? " that was named." : ": " + listOf(result_.files) + " was read.");
    }

    std::string takenSinceText()
    {
        const auto latest = std::ranges::max_element(
            rows_, {}, [](const Record& row) { return row.time ? row.time->serial : -1; });
        if (latest == rows_.end() || !latest->time) return {};
        const auto place = search_->find(*latest);
        if (!place || !*place || **place >= search_->rising().end)
            return " Its newest row is not among them.";
        const int since = search_->rising().end - 1 - **place;
        return since == 0 ? std::string()
                          : " " + text::general(since) + " were taken since the newest row of the file.";
    }

    /// Rows with empty fields count when the readout has no more to say.
    bool askForGapsInRows()
    {
        for (const auto& candidate : found_) {
            if (isWhole(candidate.row, *reader_.layout())) continue;
            auto place = candidate.place;
            if (!place) {
                const auto found = search_->find(candidate.row);
                if (!found) return no(found.error());
                place = *found;
            }
            if (!place) return no("a row with empty fields is not a record that the readout holds.");
            const auto record = search_->at(*place);
            if (!record) return no(record.error());
            if (!saysNoMore(candidate.row, *record)) {
                return no("a row of the file has empty fields that the readout can give: record " +
                          text::format(search_->whole().indexOf(*place), "0000") + ". Download it again.");
            }
        }
        return true;
    }

    bool nothingWasTaken()
    {
        const auto before = result_.pointers;
        if (!askForPointers()) return false;
        if (before == result_.pointers) return true;
        return no("the readout has taken a reading meanwhile. Continue the file, then check again.");
    }

    RecordReader& reader_;
    CheckResult& result_;
    RecordLayout layout_ = kTwoDirections;
    std::vector<Record> rows_;
    std::optional<RingSearch> search_;
    Record oldest_, newest_; ///< by time
    Record first_, last_;    ///< in the order of a download
    std::vector<Candidate> found_;
};

} // namespace

CheckResult checkFiles(RecordReader& reader, int address, const std::vector<std::filesystem::path>& files)
{
    CheckResult result{.address = address, .files = files, .at = reader.module1().clock().now()};
    Comparison(reader, result).run();
    return result;
}

Deletion judgeDeletion(const link::Exchange& exchange, int address)
{
    const auto who = "Readout " + text::general(address);
    Deletion deletion{.answered = exchange.complete(), .confirmed = isDeletionConfirmed(exchange)};
    if (deletion.confirmed) {
        deletion.words = who + " confirmed the deletion of its records.";
    } else if (deletion.answered) {
        deletion.words = who + " answered the deletion with other characters, \"" +
                         printable(exchange.reply) + "\": whether it has deleted its records is not known.";
    } else if (exchange.frameWentOut()) {
        deletion.words = "Comm Error " + whyFailed(exchange).toStdString() + " " + who +
                         " did not confirm the deletion: whether it has deleted its records is not known.";
    }
    return deletion;
}

Deletion deleteRecords(link::Module1& module1, const std::string& addressDigits, int address)
{
    const auto exchange = module1.transact(recordsDelete(addressDigits));
    auto deletion = judgeDeletion(exchange, address);
    if (!exchange.frameWentOut()) {
        deletion.words = whyFailed(exchange).toStdString();
        return deletion;
    }
    const auto pointers = askPointers(module1, addressDigits, {.retries = kRetriesForPointers});
    if (!pointers) {
        deletion.words += " Asked afterwards, it did not say what it holds.";
        return deletion;
    }
    deletion.left = spanOf(*pointers).count();
    deletion.words += *deletion.left == 0 ? " It holds no records now."
                                          : " It holds " + text::general(*deletion.left) +
                                                " records now, taken since or not deleted.";
    return deletion;
}

QJsonObject json(const CheckResult& result)
{
    QJsonArray files;
    for (const auto& file : result.files) {
        files.append(QString::fromStdString(files::inWords(file)));
    }
    return {{"address", result.address},
            {"safe", result.safe},
            {"words", QString::fromStdString(result.words)},
            {"files", files},
            {"held", result.held},
            {"inFiles", result.inFiles},
            {"at", result.at.toString(Qt::ISODate)}};
}

} // namespace quorvel::autoread
