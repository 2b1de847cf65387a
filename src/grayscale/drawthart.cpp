#include "grayscale/drawthart.h"

#include <algorithm>

namespace quorvel::grayscale {

namespace {

constexpr double kMargin = 0.015; // of the width, so that labels at the ends stand clear of the edges

void addPixels(TChart& chart, const PixelArray& array, link::InstrumentType type)
{
    QVector<double> positions;
    QVector<double> values;
    positions.reserve(array.count());
    values.reserve(array.count());
    for (int pixel = 1; pixel <= array.count(); ++pixel) {
        positions << pixelPosition(type, pixel);
        values << array[pixel];
    }
    chart.addSeries(positions, values, chart::Role::First, TChart::tr("Pixels"));
}

/// From the leftmost to the rightmost point, line or label.
QCPRange wholePositions(const TChart& chart)
{
    QCPRange whole(0, 0);
    for (const auto& label : chart.positionLabels()) {
        whole.expand(label.at);
    }
    for (int series = 0; series < chart.graphCount(); ++series) {
        bool any = false;
        const auto range = chart.graph(series)->getKeyRange(any);
        if (any) whole.expand(range);
    }
    const double margin = whole.size() * kMargin;
    return {whole.lower - margin, whole.upper + margin};
}

} // namespace

void drawAxes(TChart& chart, std::string_view direction, link::InstrumentType type)
{
    chart.setBrightnessLabels(verticalLabels());
    chart.setPositionLabels(horizontalLabels(direction, type));
    chart.setWhole(wholePositions(chart), {kLowestBrightness, kHighestBrightness});
}

void drawThart(TChart& chart, const PixelArray& array, std::string_view direction, link::InstrumentType type)
{
    addPixels(chart, array, type);
    auto legend = TChart::tr("Sensor ends");
    for (const double end : endLines(direction, type)) {
        chart.addSeries({end, end}, {kLowestBrightness, kHighestBrightness}, chart::Role::End, legend);
        legend.clear();
    }
    drawAxes(chart, direction, type);
}

} // namespace quorvel::grayscale
