#pragma once

#include "calibration/fit.h"
#include "calibration/recorddata.h"
#include "calibration/records.h"

#include <QStringList>

#include <array>
#include <cmath>
#include <optional>
#include <vector>

/// What the runs of a record are worth: errors, spreads, the verdict in words, and hints at what may have gone wrong.
namespace quorvel::calibration {

/// One column of readings at one point. All in mm; nothing where something for it is missing.
struct PointJudged {
    std::optional<double> dial;
    std::optional<double>
        reading; ///< mean of the takes up and down; of the measured run what the working file holds
    int takes = 0;
    std::optional<double> spread; ///< largest less smallest take of the same way, the larger of up and down
    std::optional<double> hysteresis; ///< up less down, after what different dial readings explain
    /// Found and left: reading less dial, or less the mean of these where the zero is free. Measured: distance from the
    /// line, when all points are there.
    std::optional<double> error;
};

/// One column of a run.
struct ColumnJudged {
    std::string column;
    std::array<PointJudged, kPoints> points;
    int complete = 0;                 ///< points with dial and reading
    std::optional<Points> table;      ///< when all are complete
    std::optional<Fit> fit;           ///< as prescribed, in single precision
    std::optional<ExactFit> exact;    ///< in double precision
    std::optional<std::size_t> worst; ///< index of the point with the largest error
    std::optional<double> zero;       ///< mean error that was taken off, where the zero is free
    double worstError() const { return worst ? std::fabs(*points[*worst].error) : 0; }
};

struct RunJudged {
    RunKind kind = RunKind::Found;
    std::vector<ColumnJudged> columns;
    bool empty = true;          ///< nothing was taken
    std::optional<bool> passes; ///< nothing without a tolerance and before all points are there
    QString verdict;            ///< in words, without the name of the run
    QStringList hints;
};

/// Judges a run.
/// @param table  the points of the working file; none when it is not there.
RunJudged judgeRun(const RecordData& record, RunKind kind, const Records& table,
                   const DirectionRow& direction);

/// What may have gone wrong in a run, and what single precision loses; nothing is refused for it.
QStringList hintsAt(const RunJudged& run, const RecordData& record);

/// True unless a length is more than what is permitted. What calculating in binary and in single precision adds, a tenth of
/// the last decimal that is shown, does not count: 0.27 - 0.25 is not more than 0.02.
bool isWithin(double mm, double permitted);

/// A length in mm with its sign and four decimals.
QString signedMm(double mm);
/// Without its sign.
QString plainMm(double mm);

} // namespace quorvel::calibration
