#include "chart/export.h"
#include "grayscale/drawthart.h"
#include "grayscale/pixelreading.h"
#include "link/address.h"
#include "protocol/direction.h"
#include "protocol/grayscale.h"

#include <QApplication>
#include <QFileInfo>

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

// quorvelctl-draw draws what `quorvelctl` has read, so that the tool itself needs neither Qt's windows nor a display.
// quorvelctl starts it; the pixels come on stdin, one a line.

namespace {

using namespace quorvel;

constexpr QSize kChartSize(1200, 600);
constexpr int kBrightest = 255;

/// @return nothing when there are too many, or a line is not a pixel.
std::optional<std::vector<std::int16_t>> pixelsFrom(std::istream& input)
{
    std::vector<std::int16_t> pixels;
    for (int pixel = 0; input >> pixel;) {
        if (pixel < 0 || pixel > kBrightest || pixels.size() == protocol::kHighestIndex) return std::nullopt;
        pixels.push_back(static_cast<std::int16_t>(pixel));
    }
    return input.eof() ? std::optional(pixels) : std::nullopt;
}

/// What the picture is of, as the window "Pixels" says it in its pictures.
chart::About aboutOf(const grayscale::PixelReading& reading)
{
    const auto known = reading.address > 0 ? grayscale::inWords(reading) : QString();
    return {QStringLiteral("Pixels"), known, reading.at};
}

/// @param reading  all but the pixels.
QString draw(const grayscale::PixelReading& reading, const QString& file)
{
    const auto sensor = reading.direction.toStdString();
    const auto pixels = pixelsFrom(std::cin);
    if (!pixels) return QStringLiteral("What came on stdin is not a list of pixels.");
    protocol::PixelArray array;
    array.store(*pixels);
    grayscale::TChart chart;
    chart.resize(kChartSize);
    grayscale::drawThart(chart, array, sensor, reading.type);
    chart.setTitle(QString::fromStdString(grayscale::chartTitle(sensor)));
    return chart::save(chart, file, QFileInfo(file).suffix(), aboutOf(reading));
}

} // namespace

int main(int argc, char* argv[])
{
    CLI::App app("Draws the chart of a grayscale reading; quorvelctl starts it.", "quorvelctl-draw");
    std::string sensor;
    std::string type;
    std::string file;
    std::string at;
    grayscale::PixelReading reading;
    reading.readings = 1;
    app.add_option("SENSOR", sensor, "X, Y, Z1 or Z2")
        ->required()
        ->check(CLI::IsMember({"X", "Y", "Z1", "Z2"}));
    app.add_option("TYPE", type, "Instrument type")->required()->check(CLI::IsMember({"A", "B", "C", "D"}));
    app.add_option("FILE", file, "The picture to make, .jpg or .png")->required();
    app.add_option("--address", reading.address, "The readout that was read")
        ->check(CLI::Range(link::kLowestAddress, link::kHighestAddress));
    app.add_option("--at", at, "When it was read: 2024-05-17T09:30:00");
    CLI11_PARSE(app, argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    reading.direction = QString::fromStdString(sensor);
    reading.type = protocol::typeNamed(type).value_or(link::TypeA);
    reading.at = QDateTime::fromString(QString::fromStdString(at), Qt::ISODate);
    const auto reason = draw(reading, QString::fromLocal8Bit(file.c_str()));
    if (reason.isEmpty()) return 0;
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    return 1;
}
