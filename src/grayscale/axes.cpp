#include "grayscale/axes.h"

#include "text/number.h"

namespace quorvel::grayscale {

namespace {

constexpr int kBrightnessStep = 20;
constexpr int kHighestBrightnessNumber = 280;
constexpr int kPositionStep = 5;    // mm
constexpr int kSensorEnd = 50;      // mm
constexpr int kStitchedEnd = 100;   // mm
constexpr double kUnitBehind = 1.5; // mm
constexpr auto kUnit = "(mm)";
constexpr auto kBrightness = "GrayScale";

bool isStitched(std::string_view direction, link::InstrumentType type)
{
    return direction == "Y" && type == link::TypeB;
}

void addNumbers(std::vector<AxisLabel>& labels, int first, int last, int step)
{
    for (int number = first; number <= last; number += step) {
        labels.push_back({static_cast<double>(number), text::general(number)});
    }
}

} // namespace

double pixelPosition(link::InstrumentType type, int pixel)
{
    return type == link::TypeA ? (pixel - 256) * 7 / 1000.0 : (pixel - 64) * 0.014 - 0.85;
}

std::vector<AxisLabel> verticalLabels()
{
    std::vector<AxisLabel> labels;
    addNumbers(labels, 0, kHighestBrightnessNumber, kBrightnessStep);
    labels.push_back({kHighestBrightness, kBrightness});
    return labels;
}

std::vector<AxisLabel> horizontalLabels(std::string_view direction, link::InstrumentType type)
{
    std::vector<AxisLabel> labels;
    if (direction == "Y" && type != link::TypeA) addNumbers(labels, 0, kStitchedEnd, kPositionStep);
    addNumbers(labels, 0, kSensorEnd, kPositionStep);
    const bool stitched = isStitched(direction, type);
    if (stitched) addNumbers(labels, kSensorEnd, kStitchedEnd, kPositionStep);
    labels.push_back({(stitched ? kStitchedEnd : kSensorEnd) + kUnitBehind, kUnit});
    return labels;
}

std::vector<double> endLines(std::string_view direction, link::InstrumentType type)
{
    if (isStitched(direction, type)) return {0, kSensorEnd, kStitchedEnd};
    return {0, kSensorEnd};
}

std::string chartTitle(std::string_view direction)
{
    return "Grayscale Graph of CCD's Pixels (" + std::string(direction) + "-direction)";
}

} // namespace quorvel::grayscale
