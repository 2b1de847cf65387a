#pragma once

#include <array>
#include <string_view>
#include <vector>

namespace quorvelsim {

/// One calibration point: what the sensor read while the dial gauge stood at `dial`, both in mm.
struct CalibrationPoint {
    double reading = 0;
    double dial = 0;
};

/// The table that a calibration download leaves in the readout. It turns what the sensor reads into what the
/// dial gauge would show: straight lines from point to point, the outer ones carried on beyond the ends.
class CalibrationTable {
public:
    static constexpr int kPoints = 11;
    static constexpr int kCharacters = kPoints * 16;

    /// Takes the 22 fields of 8 characters of a download: reading and dial of each point.
    /// @return false, and nothing changes, when a field is no signed number.
    bool load(std::string_view fields);

    /// The points as they were downloaded; empty before the first download.
    [[nodiscard]] const std::vector<CalibrationPoint>& points() const { return points_; }

    /// The corrected reading. Unchanged while fewer than two different readings are known, so a download of
    /// zeros switches the correction off.
    [[nodiscard]] double correct(double reading) const;

private:
    std::vector<CalibrationPoint> points_;
    std::vector<CalibrationPoint> ascending_; ///< by reading, each reading once
};

} // namespace quorvelsim
