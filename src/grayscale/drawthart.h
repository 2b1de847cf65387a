#pragma once

#include "grayscale/tchart.h"
#include "protocol/grayscale.h"

namespace quorvel::grayscale {

using protocol::PixelArray;

/// Gives the chart the axes and labels of a direction, wide enough for what it shows.
void drawAxes(TChart& chart, std::string_view direction, link::InstrumentType type);

/// Draws the pixels of the array with axes, labels and red lines, for the window and for pictures without one. Series
/// that the chart already has stay; the title is left alone.
void drawThart(TChart& chart, const PixelArray& array, std::string_view direction, link::InstrumentType type);

/// Writes the chart as it is shown under exactly this name; an existing file is replaced when the new one is whole.
/// @param format  "jpeg" or "png".
/// @return empty on success, otherwise the reason in words.
QString saveChart(TChart& chart, const QString& path, const char* format = "jpeg");

} // namespace quorvel::grayscale
