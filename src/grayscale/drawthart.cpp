#include "grayscale/drawthart.h"

#include "files/replace.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>

#include <algorithm>

namespace quorvel::grayscale {

namespace {

constexpr double kMargin = 0.015; // of the width, so that labels at the ends stand clear of the edges
constexpr int kPictureQuality = 92;

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
    chart.addSeries(positions, values, TChart::defaultColour(), TChart::tr("Pixels"));
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
        chart.addSeries({end, end}, {kLowestBrightness, kHighestBrightness}, Qt::red, legend);
        legend.clear();
    }
    drawAxes(chart, direction, type);
}

QString saveChart(TChart& chart, const QString& path, const char* format)
{
    QBuffer picture;
    QImageWriter writer(&picture, format);
    if (writer.format() == "jpeg") writer.setQuality(kPictureQuality);
    if (!picture.open(QIODevice::WriteOnly) || !writer.write(chart.picture())) {
        return TChart::tr("The picture %1 cannot be written: %2.").arg(path, writer.errorString());
    }
    const auto& bytes = picture.data();
    const auto written = files::replaceContent(QFileInfo(path).filesystemFilePath(),
                                               {bytes.constData(), static_cast<std::size_t>(bytes.size())});
    return written ? QString() : QString::fromStdString(written.error());
}

} // namespace quorvel::grayscale
