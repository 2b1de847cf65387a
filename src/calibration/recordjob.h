#pragma once

#include "calibration/recordview.h"
#include "jet/result.h"
#include "link/module1.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A calibration from the first reading to the record: what a window and the command line do with the working file of a
/// direction and the record beside it. Nothing here shows or asks the operator anything; what needs a consent says so in
/// words before. The working file is open only while it is read or written, so that the calibration window finds it free.
///
///     RecordJob job(module1, folder, direction);
///     if (const auto loaded = job.load(); !loaded) return say(loaded.error());
///     job.take({RunKind::Measured, 3, 0.75, false, 3, 5}, stopped);
///     if (job.whyNotTheirs(5).isEmpty() || agreed()) job.download(5, progress);
namespace quorvel::calibration {

/// One point to be measured.
struct TakeOrder {
    RunKind kind = RunKind::Measured;
    int point = 0;   ///< 0 to kPoints - 1
    double dial = 0; ///< mm
    bool down = false;
    int repeats = 1;
    int address = 0; ///< 1 to 249
};

/// What became of tables that were sent.
struct Sent {
    QStringList words;   ///< a sentence for each, and what else there is to say
    bool agreed = false; ///< all were repeated well
};

class RecordJob : public RecordView {
public:
    RecordJob(link::Module1& module1, const std::filesystem::path& folder, const DirectionRow& direction)
        : RecordView(folder, direction), module1_(module1)
    {}

    /// Changes the record beside the working file.
    jet::Status change(const std::function<void(RecordData&)>& change);

    /// Asks the readout once. @return a reading for each column; fails with the reason.
    jet::Result<std::vector<double>> ask(int address);

    /// Asks as often as ordered, replaces the takes of that point and way, and writes them: those of the measured run into
    /// the working file, too, which is made when it is missing. Fails, and leaves the point as it was, when an answer is
    /// missing or `stop` said so. Fails also when something could not be written.
    jet::Status take(const TakeOrder& order, const std::function<bool()>& stop = {});

    /// Forgets what was taken of a run; the working file stays as it is.
    jet::Status clear(RunKind kind);

    /// Sends the points of the working file, after a dated copy of it was kept. Fails, with nothing sent, when a point is
    /// not complete.
    /// @param sent  called with the number of characters of the frame that went out.
    jet::Result<Sent> download(int address, const std::function<void(int)>& sent = {});
    /// Sends tables of zeros by the same frames: the readout no longer corrects what it reads.
    Sent switchOff(int address, const std::function<void(int)>& sent = {});

    /// Empties all points, for another readout or a new start: working file and record are kept under the day's date, and
    /// a new working file takes the place of the old one. Gauge, person, tolerance and downloads stay in the record.
    /// @return the copy of the working file; empty when there was none.
    jet::Result<std::filesystem::path> newTable();

private:
    std::time_t now() const;
    jet::Result<Pass> measure(const TakeOrder& order, const std::function<bool()>& stop);
    jet::Status writePoint(int row, const RunPoint& point);
    void send(const ReadingColumn& reading, int address, bool zeros, const Points& points,
              const std::function<void(int)>& sent, Sent& result);

    link::Module1& module1_;
};

} // namespace quorvel::calibration
