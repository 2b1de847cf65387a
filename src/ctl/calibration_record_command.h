#pragma once

#include "calibration/direction.h"
#include "calibration/records.h"
#include "link/transaction.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The record beside a calibration file: what `calibrate` tells it, and `calibrate record`.
namespace quorvel::ctl {

class Console;

/// What `calibrate` works on.
struct CalibrateOptions {
    std::string direction; ///< X, Y or Z
    std::string folder;    ///< empty: the program's
    int point = 0;
    std::string dial;
};

inline constexpr auto kWhichDirection = "Name the direction: X, Y or Z.";

/// The command that draws.
inline constexpr auto kRecordCommand = "record";

/// Adds `calibrate record FILE`.
void addRecordCommand(CLI::App& calibrate, Console& console,
                      const std::shared_ptr<CalibrateOptions>& options);

/// A calibration file that a command works on.
struct WorkingFile {
    std::filesystem::path path;
    const calibration::DirectionRow& direction;
};

/// Notes where a point was measured. What cannot be noted is a remark, no failure: nothing else needs the record.
void noteReadings(Console& console, const WorkingFile& file, int point, const std::vector<double>& readings);

/// Asks before points that are known to be another readout's are sent, and keeps a dated copy of what is sent.
/// @return false when they are not to be sent, which was reported.
bool mayDownload(Console& console, const WorkingFile& file, const calibration::Records& points);

/// Notes a table that was sent.
void noteDownload(Console& console, const WorkingFile& file, const calibration::ReadingColumn& reading,
                  const link::Exchange& exchange);

} // namespace quorvel::ctl
