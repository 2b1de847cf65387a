#include "calibration/judgement.h"
#include "calibration/ownership.h"
#include "link/bytes.h"
#include "text/number.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace quorvel::calibration {

namespace {

constexpr double kLooksCorrected = 0.1; // mm, of all readings from their dial readings

/// The values that are there, with the numbers of their points.
std::vector<std::pair<int, double>> present(const ColumnJudged& column,
                                            const std::optional<double> PointJudged::*value)
{
    std::vector<std::pair<int, double>> found;
    for (std::size_t i = 0; i < column.points.size(); ++i) {
        if (const auto& held = column.points[i].*value) found.emplace_back(static_cast<int>(i), *held);
    }
    return found;
}

QString doubled(const std::vector<std::pair<int, double>>& values)
{
    for (std::size_t i = 1; i < values.size(); ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            if (values[i].second != values[k].second) continue;
            return QStringLiteral("points %1 and %2 have the same dial reading, %3 mm")
                .arg(values[k].first)
                .arg(values[i].first)
                .arg(link::shown(text::general(values[i].second)));
        }
    }
    return {};
}

/// The first value that turns back.
/// @param what  "dial reading".
QString outOfOrder(const std::vector<std::pair<int, double>>& values, const char* what)
{
    double way = 0;
    for (std::size_t i = 1; i < values.size(); ++i) {
        const double step = values[i].second - values[i - 1].second;
        if (step * way < 0) {
            return QStringLiteral("the %1 of point %2 is out of order")
                .arg(QLatin1String(what))
                .arg(values[i].first);
        }
        if (way == 0) way = step;
    }
    return {};
}

QString lostDigits(const ColumnJudged& column)
{
    if (!column.fit || !column.exact || !losesDigits(*column.fit, *column.exact, *column.table)) return {};
    return QStringLiteral(
               "the sums in single precision lose digits: the line is %1 as prescribed, %2 in double "
               "precision, with a nonlinear error of %3 mm and a largest of %4 mm. Dial readings near "
               "zero avoid this")
        .arg(link::shown(lineText(*column.fit)), link::shown(lineText(*column.exact)),
             plainMm(column.exact->nonlinearError), plainMm(column.exact->maxError));
}

QString wideSpread(const ColumnJudged& column, const std::optional<double>& tolerance)
{
    if (!tolerance) return {};
    for (std::size_t i = 0; i < column.points.size(); ++i) {
        const auto& spread = column.points[i].spread;
        if (spread && !isWithin(*spread, *tolerance)) {
            return QStringLiteral("the readings of point %1 spread over %2 mm, more than is permitted")
                .arg(i)
                .arg(plainMm(*spread));
        }
    }
    return {};
}

QString tooLong(const ColumnJudged& column)
{
    for (std::size_t i = 0; i < column.points.size(); ++i) {
        for (const auto& value : {column.points[i].dial, column.points[i].reading}) {
            if (value && !protocol::fitsCalibrationField(*value)) {
                return QStringLiteral("point %1 has a value of 1000 or more, which no download can carry")
                    .arg(i);
            }
        }
    }
    return {};
}

bool looksCorrected(const ColumnJudged& column)
{
    return column.complete == kPoints && std::ranges::all_of(column.points, [](const PointJudged& point) {
               return std::fabs(*point.reading - *point.dial) < kLooksCorrected;
           });
}

/// True when what holds for a take holds for any of the run.
bool anyTake(const Run& run, const std::function<bool(const Take&)>& holds)
{
    return std::ranges::any_of(run, [&](const RunPoint& point) {
        return std::ranges::any_of(point.passes,
                                   [&](const Pass& pass) { return std::ranges::any_of(pass.takes, holds); });
    });
}

/// Whether the readings of a run came with the correction that belongs to it.
QString wrongCorrection(const RunJudged& run, const ColumnJudged& column, const RecordData& record)
{
    const auto taken = [&](const std::optional<bool>& how) {
        return anyTake(record.run(run.kind), [&](const Take& take) {
            return corrects(record, take.address, column.column, take.at) == how;
        });
    };
    if (run.kind == RunKind::Measured) {
        if (taken(true)) {
            return QStringLiteral(
                "readings came back corrected by the table that the readout had; switch the "
                "correction off and measure again");
        }
        if (!taken(false) && looksCorrected(column)) {
            return QStringLiteral(
                "all readings agree with the dial readings: the readout seems to have a table "
                "already; switch the correction off and measure again");
        }
    }
    if (run.kind == RunKind::Found && taken(false))
        return QStringLiteral("the correction was switched off when this was taken");
    if (run.kind == RunKind::Left && !taken(true))
        return QStringLiteral("no confirmed download to this readout came before it");
    return {};
}

QString severalReadouts(const RunJudged& run, const RecordData& record)
{
    const bool others = anyTake(record.run(run.kind), [&](const Take& take) {
        return record.address > 0 && take.address != record.address;
    });
    if (!others) return {};
    return QStringLiteral("some readings are of another readout than %1, whose record this is")
        .arg(record.address);
}

} // namespace

QStringList hintsAt(const RunJudged& run, const RecordData& record)
{
    QStringList hints;
    if (run.empty) return hints;
    const auto add = [&](const QString& hint) {
        if (hint.isEmpty()) return;
        auto sentence = hint + u'.';
        sentence[0] = sentence[0].toUpper();
        if (!hints.contains(sentence)) hints << sentence;
    };
    add(severalReadouts(run, record));
    for (const auto& column : run.columns) {
        const auto dials = present(column, &PointJudged::dial);
        const auto name = run.columns.size() > 1 ? column.column + " reading" : std::string("reading");
        add(wrongCorrection(run, column, record));
        add(doubled(dials));
        add(outOfOrder(dials, "dial reading"));
        add(outOfOrder(present(column, &PointJudged::reading), name.c_str()));
        add(wideSpread(column, record.tolerance));
        add(lostDigits(column));
        add(tooLong(column));
    }
    return hints;
}

} // namespace quorvel::calibration
