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

} // namespace quorvel::grayscale
