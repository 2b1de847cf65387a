#pragma once

#include <array>

namespace quorvel::calibration {

/// Points of a calibration table, in the order of their numbers. Tables may hold more; the fit and the download use
/// these many.
inline constexpr int kPoints = 11;

/// One complete point: what the sensor read while the dial gauge stood at `dial`, both in mm.
struct Point {
    float dial = 0;
    float reading = 0;
};

using Points = std::array<Point, kPoints>;

/// Shown when a point is missing or not complete.
inline constexpr auto kDataEmpty = "Some Data is empty, Please check!";

} // namespace quorvel::calibration
