#include "protocol/calibration_table.h"

#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <cmath>

namespace quorvel::protocol {

namespace {

constexpr int kValues = 2 * kPoints;
constexpr int kTableValueLength = 8;
// Two decimals that differ by 0.01 may differ by a little less in binary.
constexpr double kTolerance = 0.01 - 1e-9;

/// The k-th value, from 0 on, of a frame or an echo.
double valueAt(Sensor sensor, std::string_view text, int k)
{
    const auto values = field(tableOf(sensor).command, 0, text);
    return text::Val(text::mid(values, kTableValueLength * k + 1, kTableValueLength));
}

} // namespace

std::string FormatCalibrationNumber(double value)
{
    constexpr auto kPattern = "000.000";
    return value < 0 ? text::format(value, kPattern) : "+" + text::format(value, kPattern);
}

bool fitsCalibrationField(double value) { return FormatCalibrationNumber(value).size() == kTableValueLength; }

link::Transaction tableDownload(Sensor sensor, std::string_view addressDigits, const Points& points)
{
    std::string values;
    for (const auto& point : points) {
        values += FormatCalibrationNumber(static_cast<double>(point.reading));
        values += FormatCalibrationNumber(static_cast<double>(point.dial));
    }
    return transaction(tableOf(sensor).command, addressDigits, values);
}

int echoLength(Sensor sensor) { return command(tableOf(sensor).command).reply.count; }

double echoDifference(Sensor sensor, std::string_view frame, std::string_view echo)
{
    double largest = 0;
    for (int k = 0; k < kValues; ++k) {
        largest = std::max(largest, std::fabs(valueAt(sensor, frame, k) - valueAt(sensor, echo, k)));
    }
    return largest;
}

bool echoAgrees(Sensor sensor, std::string_view frame, std::string_view echo)
{
    return static_cast<int>(frame.size()) == echoLength(sensor) &&
           echoDifference(sensor, frame, echo) < kTolerance;
}

} // namespace quorvel::protocol
