#pragma once

#include "link/bench.h"

#include <string>
#include <string_view>
#include <vector>

/// Where things are on the chart: positions in millimetres along the sensor, brightness 0 to 300.
namespace quorvel::grayscale {

inline constexpr double kLowestBrightness = 0;
inline constexpr double kHighestBrightness = 300;

/// Where pixel `pixel` (from 1) lies, in mm.
double pixelPosition(link::InstrumentType type, int pixel);

/// A text at a place of an axis.
struct AxisLabel {
    double at = 0;
    std::string text;

    friend bool operator==(const AxisLabel&, const AxisLabel&) = default;
};

/// The labels of the brightness axis: 0, 20 ... 280, and "GrayScale" at 300.
std::vector<AxisLabel> verticalLabels();

/// The labels of the position axis in the order in which they are added; some occur twice. Y gets labels up to 100
/// for every type but A, but the unit behind them and the third red line for type B only.
std::vector<AxisLabel> horizontalLabels(std::string_view direction, link::InstrumentType type);

/// Positions of the red lines that mark the ends of a sensor, in mm.
std::vector<double> endLines(std::string_view direction, link::InstrumentType type);

inline constexpr std::string_view kReadingTitle = "Reading grayscale data .... Please wait!";

/// The title over a finished chart.
std::string chartTitle(std::string_view direction);

} // namespace quorvel::grayscale
