#include "calibration/download.h"

#include "text/number.h"
#include "text/reply.h"

#include <cmath>

namespace quorvel::calibration {

namespace {

constexpr int kValues = 2 * kPoints;
constexpr int kValueLength = 8;
constexpr int kShortCommand = 4;       // digits
constexpr int kAround = 1 + 2 + 2 + 2; // ":", address, "FF", line end
// Two decimals that differ by 0.01 may differ by a little less in binary.
constexpr double kTolerance = 0.01 - 1e-9;

double valueAt(std::string_view text, int position)
{
    return text::Val(text::mid(text, position, kValueLength));
}

} // namespace

std::string FormatCalibrationNumber(double value)
{
    constexpr auto kPattern = "000.000";
    return value < 0 ? text::format(value, kPattern) : "+" + text::format(value, kPattern);
}

std::string downloadFrame(const Reading& reading, std::string_view addressDigits, const Points& points)
{
    std::string frame = ":" + std::string(addressDigits) + std::string(reading.downloadCommand);
    for (const auto& point : points) {
        frame += FormatCalibrationNumber(point.reading);
        frame += FormatCalibrationNumber(point.dial);
    }
    return text::withLineEnd(frame + "FF");
}

int echoLength(const Reading& reading)
{
    return kAround + static_cast<int>(reading.downloadCommand.size()) + kValues * kValueLength;
}

bool echoAgrees(const Reading& reading, std::string_view frame, std::string_view echo)
{
    const int shift = static_cast<int>(reading.downloadCommand.size()) - kShortCommand;
    for (int k = 1; k <= kValues; ++k) {
        const int position = kValueLength * k + shift;
        if (std::fabs(valueAt(frame, position) - valueAt(echo, position)) >= kTolerance) return false;
    }
    return true;
}

std::string sendDownload(link::Module1& module1, const Reading& reading, std::string_view frame,
                         const std::function<void(int)>& sent)
{
    module1.discardInput();
    module1.SendFrame(frame, sent);
    module1.WaitForInput(kEchoTimeout, echoLength(reading));
    return module1.takeInput();
}

} // namespace quorvel::calibration
