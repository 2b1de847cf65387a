#pragma once

#include "calibration/direction.h"
#include "files/result.h"
#include "protocol/calibration_table.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>

#include <array>
#include <optional>
#include <vector>

/// The record of a calibration: for whom, by whom and when the points of a working file were taken. It is kept as JSON
/// beside the working file (recordfile.h); docs/calibration-record.schema.json is its form.
namespace quorvel::calibration {

using protocol::kPoints;

/// The three runs over the same points: with the table that the readout had, the one that makes the new table, and with
/// the new table in the readout.
enum class RunKind { Found, Measured, Left };

struct RunRow {
    RunKind kind;
    const char* key;  ///< in JSON
    const char* name; ///< for people
};
inline constexpr RunRow kRuns[] = {{RunKind::Found, "found", "As found"},
                                   {RunKind::Measured, "measured", "Measured"},
                                   {RunKind::Left, "left", "As left"}};

/// What a readout answered once.
struct Take {
    QDateTime at;                 ///< local time
    int address = 0;              ///< of the readout, 1 to 249
    std::vector<double> readings; ///< mm, one for each column of readings of the direction

    bool operator==(const Take&) const = default;
};

/// The takes of a point that was come to from one side.
struct Pass {
    std::optional<double> dial; ///< mm; nothing where only the working file holds it
    bool down = false;          ///< come to from above
    std::vector<Take> takes;

    bool operator==(const Pass&) const = default;
};

/// A point of a run: at most one pass upwards and one downwards.
struct RunPoint {
    std::vector<Pass> passes;

    /// null when there is none of that way
    const Pass* pass(bool down) const;
    /// Replaces the pass of the same way, or adds one.
    void put(Pass pass);

    bool operator==(const RunPoint&) const = default;
};

/// Mean of each column of readings; empty without takes.
std::vector<double> meansOf(const Pass& pass);
/// Mean of the passes' means in one column; nothing without takes.
std::optional<double> meanOf(const RunPoint& point, std::size_t column);

using Run = std::array<RunPoint, kPoints>;

/// What the readout repeated of a table.
enum class Verdict {
    Agrees,     ///< every value within 0.01
    Differs,    ///< some value is not
    Incomplete, ///< the echo had another length, or none came
};

/// A table that was sent to a readout.
struct DownloadNote {
    QDateTime at;
    int address = 0;
    std::string column; ///< of the readings
    bool zeros = false; ///< a table of zeros, which switches the correction off
    std::string frame;  ///< without its line end
    Verdict verdict = Verdict::Incomplete;
    std::optional<double> largestDifference; ///< mm, between frame and echo; nothing for an incomplete echo

    bool operator==(const DownloadNote&) const = default;
};

struct RecordData {
    int address = 0; ///< of the readout that the record is about; 0: not known
    QString serial, gauge, person, remark;
    std::optional<double> tolerance; ///< mm, above 0
    double steadyWithin = 0.005;     ///< mm, above 0: readings are steady when the last ones spread less
    bool zeroIsFree = false;         ///< errors count from their mean: the zero of the gauge means nothing
    QDateTime begun;                 ///< when the table was last emptied; invalid: not known
    std::array<Run, std::size(kRuns)> runs;
    std::vector<DownloadNote>
        downloads;      ///< oldest first; longer than the record, it tells what a readout corrects by
    QJsonObject origin; ///< as it was read; keys that are unknown here are written again

    /// When all takes are of one readout, the record is about that one.
    void settleAddress();

    Run& run(RunKind kind) { return runs[static_cast<std::size_t>(kind)]; }
    const Run& run(RunKind kind) const { return runs[static_cast<std::size_t>(kind)]; }
};

/// What people say of a record in their words and numbers, as its fields show them: serial, gauge, person, remark,
/// tolerance, steadyWithin.
std::array<QString, 6> detailsOf(const RecordData& record);
/// True when these and zeroIsFree are the same.
bool hasSameDetails(const RecordData& one, const RecordData& other);

/// Reads a record. Fails, with the reason as half a sentence ("it is not JSON"), for what is no record of this direction,
/// is of a later version, or has a value of another kind than it should.
files::Result<RecordData> readRecord(const QByteArray& json, const DirectionRow& direction);

/// The record as JSON, with all that was unknown in what it was read from.
QJsonObject recordJson(const RecordData& record, const DirectionRow& direction);

/// "agrees", "differs" or "incomplete".
const char* nameOf(Verdict verdict);

} // namespace quorvel::calibration
