#include "autoread/report.h"

#include "autoread/ring_search.h"
#include "files/name.h"
#include "text/duration.h"
#include "text/number.h"

#include <QJsonArray>

#include <algorithm>

namespace quorvel::autoread {

namespace {

using Kind = Finding::Kind;

/// A kind of finding, how a list of them is called in JSON, and in words.
struct KindRow {
    Kind kind;
    const char* name;
    const char* list;
    const char* words;
};
constexpr KindRow kKinds[] = {
    {Kind::Unreadable, "unreadable", "unreadable", "fields that could not be read and stay empty"},
    {Kind::Misfit, "misfit", "misfits", "replies that do not fit the question"},
    {Kind::Gap, "gap", "gaps", "gaps"},
    {Kind::Double, "double", "doubles", "records with the time of the one before"},
    {Kind::Backward, "backward", "backward", "steps back in time"},
};

constexpr const char* kEndings[] = {"complete",      "stopped",     "comm error",
                                    "reply misfits", "file failed", "not begun"};

const KindRow& rowOf(Kind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

/// How far a step may exceed the interval: a readout waits for its second to be over.
constexpr double kTolerance = 1; // s

/// The steps between the records, in their order.
class Steps {
public:
    Steps(const std::vector<StoredRecord>& stored, const std::optional<Record>& before)
    {
        times_.push_back(before ? before->time : std::nullopt);
        for (const auto& each : stored) {
            times_.push_back(each.record.time);
        }
    }

    /// Seconds from the record before to the record at `index`; nothing when a time is missing.
    std::optional<double> to(std::size_t index) const
    {
        if (index + 1 >= times_.size() || !times_[index] || !times_[index + 1]) return std::nullopt;
        return secondsBetween(*times_[index], *times_[index + 1]);
    }

    /// True when the step is as long as one beside it.
    bool isUsual(std::size_t index) const
    {
        const auto step = to(index);
        return step && ((index > 0 && to(index - 1) == step) || to(index + 1) == step);
    }

private:
    std::vector<std::optional<jet::Date>> times_;
};

std::optional<Finding> findingOfStep(const Steps& steps, std::size_t index, std::optional<int> interval)
{
    const auto step = steps.to(index);
    if (!step) return std::nullopt;
    Finding finding;
    if (*step == 0) {
        finding.kind = Kind::Double;
        finding.words = "the same time as the record before";
    } else if (*step < 0) {
        finding.kind = Kind::Backward;
        finding.words = text::duration(-*step) + " before the record before it";
    } else if (interval && *step > *interval + kTolerance && !steps.isUsual(index)) {
        finding.kind = Kind::Gap;
        finding.words =
            text::duration(*step) + " after the record before, instead of " + text::duration(*interval);
    } else {
        return std::nullopt;
    }
    return finding;
}

std::string isoOf(const std::optional<jet::Date>& time) { return time ? time->iso() : std::string(); }

QJsonValue jsonTime(const std::optional<jet::Date>& time)
{
    return time ? QJsonValue(QString::fromStdString(time->iso())) : QJsonValue();
}

QJsonObject jsonOf(const LineCounts& line)
{
    return {{"questions", line.questions},         {"askedAgain", line.askedAgain},
            {"incomplete", line.incomplete},       {"misfits", line.misfits},
            {"disagreements", line.disagreements}, {"noise", static_cast<qint64>(line.noise)}};
}

QJsonArray jsonOf(const std::vector<Finding>& findings)
{
    QJsonArray array;
    for (const auto& finding : findings) {
        array.append(QJsonObject{{"kind", rowOf(finding.kind).name},
                                 {"index", finding.slot},
                                 {"row", finding.row},
                                 {"words", QString::fromStdString(finding.words)}});
    }
    return array;
}

std::string lineText(const LineCounts& line)
{
    const auto count = [](int number, const char* what) { return text::general(number) + what; };
    return count(line.questions, " questions, ") + count(line.askedAgain, " of them again; ") +
           count(line.incomplete, " replies incomplete, ") + count(line.misfits, " not the one asked for, ") +
           count(line.disagreements, " different from the one before; ") +
           count(static_cast<int>(line.noise), " characters of noise");
}

} // namespace

int Report::count(Finding::Kind kind) const
{
    return static_cast<int>(std::ranges::count(findings, kind, &Finding::kind));
}

std::vector<Finding> findingsIn(const std::vector<StoredRecord>& stored, int rowsBefore,
                                const std::optional<Record>& before, std::optional<int> interval)
{
    const Steps steps(stored, before);
    std::vector<Finding> findings;
    for (std::size_t i = 0; i < stored.size(); ++i) {
        const int row = rowsBefore + static_cast<int>(i) + 1;
        const auto add = [&](Kind kind, const std::string& words) {
            findings.push_back({kind, stored[i].slot, row, words});
        };
        for (const auto& field : stored[i].unreadable) {
            add(Kind::Unreadable, protocol::unreadableText(field));
        }
        for (const auto& misfit : stored[i].misfits) {
            add(Kind::Misfit, misfit);
        }
        if (const auto step = findingOfStep(steps, i, interval)) add(step->kind, step->words);
    }
    return findings;
}

void fill(Report& report, const Outcome& outcome, const std::optional<Record>& before, const LineCounts& line)
{
    report.ending = outcome.ending;
    report.reason = outcome.reason;
    report.received = outcome.received();
    report.line = line;
    for (const auto& stored : outcome.stored) {
        if (!stored.record.time) continue;
        if (!report.firstTime) report.firstTime = stored.record.time;
        report.lastTime = stored.record.time;
    }
    report.findings = findingsIn(outcome.stored, report.rowsBefore, before, report.interval);
}

std::string text(const Finding& finding)
{
    return "Row " + text::general(finding.row) + ", record " + text::format(finding.slot, "0000") + ": " +
           finding.words;
}

std::string summary(const Report& report)
{
    const auto records = text::general(report.received) + " of " + text::general(report.expected) +
                         (report.continued ? " new records" : " records");
    auto words = records + " of readout " + text::general(report.address) + " are in " +
                 files::inWords(report.file) + ".";
    if (const int unreadable = report.count(Kind::Unreadable); unreadable > 0)
        words += " " + text::general(unreadable) + " fields could not be read and are empty.";
    if (!report.keptOld.empty())
        words += " The file that was there before is kept as " + files::inWords(report.keptOld) + ".";
    return words;
}

std::string text(const Report& report)
{
    std::string lines;
    const auto line = [&lines](const std::string& name, const std::string& content) {
        if (!content.empty()) lines.append(name).append(": ").append(content).append("\n");
    };
    const auto yesNo = [](bool yes) { return yes ? "yes" : "no"; };
    line("Readout", text::general(report.address) + ", type " + report.type);
    line("File", files::inWords(report.file));
    if (report.continued) line("Rows before", text::general(report.rowsBefore));
    line("Records", text::general(report.received) + " of " + text::general(report.expected) + ", " +
                        kEndings[static_cast<std::size_t>(report.ending)]);
    line("Reason", report.reason);
    line("First", isoOf(report.firstTime));
    line("Last", isoOf(report.lastTime));
    if (report.interval) line("Interval", text::duration(*report.interval));
    if (report.clock) line("Readout's clock", text(*report.clock));
    line("Each record verified", yesNo(report.verified));
    line("Safe to delete", report.safeToDelete ? yesNo(*report.safeToDelete) : "not checked");
    line("Line", lineText(report.line));
    line("Former file", files::inWords(report.keptOld));
    for (const auto& kind : kKinds) {
        if (const int count = report.count(kind.kind); count > 0)
            line("Found", text::general(count) + " " + kind.words);
    }
    for (const auto& finding : report.findings) {
        lines += text(finding) + "\n";
    }
    return lines;
}

QJsonObject json(const Report& report)
{
    QJsonObject object{
        {"address", report.address},
        {"type", QString::fromStdString(report.type)},
        {"file", QString::fromStdString(files::inWords(report.file))},
        {"continued", report.continued},
        {"rowsBefore", report.rowsBefore},
        {"expected", report.expected},
        {"received", report.received},
        {"complete", report.complete()},
        {"ending", kEndings[static_cast<std::size_t>(report.ending)]},
        {"reason", QString::fromStdString(report.reason)},
        {"first", jsonTime(report.firstTime)},
        {"last", jsonTime(report.lastTime)},
        {"intervalSeconds", report.interval ? QJsonValue(*report.interval) : QJsonValue()},
        {"verified", report.verified},
        {"safeToDelete", report.safeToDelete ? QJsonValue(*report.safeToDelete) : QJsonValue()},
        {"line", jsonOf(report.line)},
        {"findings", jsonOf(report.findings)},
        {"clock", QJsonValue()},
        {"keptOld", QString::fromStdString(files::inWords(report.keptOld))}};
    for (const auto& kind : kKinds) {
        object.insert(QLatin1String(kind.list), report.count(kind.kind));
    }
    if (report.clock) object.insert("clock", json(*report.clock));
    return object;
}

} // namespace quorvel::autoread
