#include "calibration/judgement.h"

#include "link/bytes.h"
#include "text/number.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace quorvel::calibration {

namespace {

constexpr double kOfCalculating = 5e-6; // mm

std::optional<double> spreadOf(const Pass& pass, std::size_t column)
{
    if (pass.takes.size() < 2) return std::nullopt;
    const auto [low, high] =
        std::ranges::minmax(pass.takes, {}, [column](const Take& take) { return take.readings[column]; });
    return high.readings[column] - low.readings[column];
}

std::optional<double> mean(const std::vector<double>& values)
{
    if (values.empty()) return std::nullopt;
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

/// What the takes of a point come to.
PointJudged pointOf(const RunPoint& point, std::size_t column)
{
    PointJudged judged;
    std::vector<double> dials;
    for (const auto& pass : point.passes) {
        judged.takes += static_cast<int>(pass.takes.size());
        if (pass.dial) dials.push_back(*pass.dial);
        if (const auto spread = spreadOf(pass, column))
            judged.spread = std::max(judged.spread.value_or(0), *spread);
    }
    judged.dial = mean(dials);
    judged.reading = meanOf(point, column);
    return judged;
}

std::optional<double> hysteresisOf(const RunPoint& point, std::size_t column, double slope)
{
    const auto* up = point.pass(false);
    const auto* down = point.pass(true);
    if (!up || !down || up->takes.empty() || down->takes.empty()) return std::nullopt;
    const double apart = up->dial && down->dial ? *up->dial - *down->dial : 0;
    return meansOf(*up)[column] - meansOf(*down)[column] - slope * apart;
}

/// The measured run is what the working file holds; the takes count where they still lead to that.
void takeFromTable(PointJudged& point, const Records& table, int row, const ReadingColumn& reading)
{
    const auto dial = singleIn(table, row, kDialColumn);
    const auto held = singleIn(table, row, columnOf(table.fields(), reading.name));
    const bool same =
        held && point.reading && static_cast<float>(*point.reading) == static_cast<float>(*held);
    if (!same) point = {};
    point.dial = dial;
    point.reading = held;
}

void addFits(ColumnJudged& column)
{
    if (column.complete < kPoints) return;
    Points points;
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = {static_cast<float>(*column.points[i].dial),
                     static_cast<float>(*column.points[i].reading)};
    }
    column.table = points;
    column.fit = fitLine(points);
    column.exact = fitExactly(points);
}

void addErrors(ColumnJudged& column, RunKind kind, bool zeroIsFree)
{
    std::vector<double> differences;
    for (std::size_t i = 0; i < column.points.size(); ++i) {
        auto& point = column.points[i];
        if (!point.dial || !point.reading) continue;
        if (kind != RunKind::Measured) point.error = *point.reading - *point.dial;
        if (kind == RunKind::Measured && column.fit) point.error = column.fit->residuals[i];
        if (point.error) differences.push_back(*point.error);
    }
    if (zeroIsFree && kind != RunKind::Measured) column.zero = mean(differences);
    for (std::size_t i = 0; i < column.points.size(); ++i) {
        auto& error = column.points[i].error;
        if (!error) continue;
        *error -= column.zero.value_or(0);
        if (!column.worst || !isWithin(std::fabs(*error), column.worstError())) column.worst = i;
    }
}

ColumnJudged judgeColumn(const RecordData& record, RunKind kind, const Records& table,
                         const ReadingColumn& reading, std::size_t index)
{
    ColumnJudged column;
    column.column = reading.name;
    for (std::size_t i = 0; i < column.points.size(); ++i) {
        auto& point = column.points[i];
        point = pointOf(record.run(kind)[i], index);
        if (kind == RunKind::Measured) takeFromTable(point, table, static_cast<int>(i), reading);
        if (point.dial && point.reading) ++column.complete;
    }
    addFits(column);
    addErrors(column, kind, record.zeroIsFree);
    const double slope = kind == RunKind::Measured && column.exact ? column.exact->slope : 1;
    for (std::size_t i = 0; i < column.points.size(); ++i) {
        if (column.points[i].takes > 0)
            column.points[i].hysteresis = hysteresisOf(record.run(kind)[i], index, slope);
    }
    return column;
}

QString figuresOf(const ColumnJudged& column, bool named)
{
    QString words = named ? link::shown(column.column) + QStringLiteral(": ") : QString();
    words += QStringLiteral("worst error %1 mm at point %2")
                 .arg(plainMm(column.worstError()))
                 .arg(column.worst.value_or(0));
    if (column.fit)
        words += QStringLiteral(", nonlinear error %1 mm").arg(plainMm(column.fit->nonlinearError));
    if (column.zero) words += QStringLiteral(", zero %1 mm taken off").arg(signedMm(*column.zero));
    return words;
}

bool passes(const ColumnJudged& column, double tolerance)
{
    return column.fit && isWithin(column.worstError(), tolerance) &&
           isWithin(column.fit->nonlinearError, tolerance);
}

void addVerdict(RunJudged& run, const RecordData& record)
{
    const int complete = std::ranges::min(run.columns, {}, &ColumnJudged::complete).complete;
    if (run.empty) {
        run.verdict = QStringLiteral("not taken.");
        return;
    }
    if (complete < kPoints) {
        run.verdict =
            QStringLiteral("%1 of %2 points, no verdict before all are there.").arg(complete).arg(kPoints);
        return;
    }
    if (std::ranges::any_of(run.columns, [](const ColumnJudged& column) { return !column.fit; })) {
        run.verdict = QLatin1String(kNoLine);
        return;
    }
    QStringList figures;
    for (const auto& column : run.columns) {
        figures << figuresOf(column, run.columns.size() > 1);
    }
    const auto all = figures.join(QStringLiteral("; "));
    if (!record.tolerance) {
        run.verdict = all + QStringLiteral(". No tolerance is entered.");
        return;
    }
    run.passes = std::ranges::all_of(
        run.columns, [&](const ColumnJudged& column) { return passes(column, *record.tolerance); });
    run.verdict = QStringLiteral("%1: %2; permitted %3 mm.")
                      .arg(*run.passes ? QStringLiteral("pass") : QStringLiteral("FAIL"), all,
                           link::shown(text::general(*record.tolerance)));
}

} // namespace

bool isWithin(double mm, double permitted) { return mm <= permitted + kOfCalculating; }

QString signedMm(double mm)
{
    auto digits = plainMm(mm);
    if (digits == QLatin1String("0.0000")) return digits;
    return (mm < 0 ? u'-' : u'+') + digits;
}

QString plainMm(double mm) { return link::shown(text::format(std::fabs(mm), "0.0000")); }

RunJudged judgeRun(const RecordData& record, RunKind kind, const Records& table,
                   const DirectionRow& direction)
{
    RunJudged run;
    run.kind = kind;
    for (std::size_t i = 0; i < direction.readings.size(); ++i) {
        run.columns.push_back(judgeColumn(record, kind, table, direction.readings[i], i));
    }
    run.empty = std::ranges::none_of(run.columns, [](const ColumnJudged& column) {
        return std::ranges::any_of(column.points,
                                   [](const PointJudged& point) { return point.reading.has_value(); });
    });
    addVerdict(run, record);
    run.hints = hintsAt(run, record);
    return run;
}

} // namespace quorvel::calibration
