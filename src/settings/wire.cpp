#include "settings/wire.h"

#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <limits>

namespace quorvel::settings {

namespace {

constexpr int kWireReply = 19;
constexpr int kFieldLength = 2;
constexpr int kDiameterPosition = 6;
constexpr int kErrorPosition = 8;
constexpr int kSelfCalibrationPosition = 10;
constexpr auto kFieldFormat = "00";
constexpr auto kMillimetreFormat = "0.0";

bool isRefused(std::string_view text) { return tenthsOf(text) == 0 && text != "0"; }

std::string_view field(std::string_view reply, int position)
{
    return text::mid(reply, position, kFieldLength);
}

std::string millimetres(float tenths) { return text::format(tenths / 10, kMillimetreFormat) + "mm"; }

} // namespace

float tenthsOf(std::string_view millimetres)
{
    constexpr double kLargest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(text::Val(millimetres) * 10, -kLargest, kLargest));
}

const char* wireInputError(std::string_view diameter, std::string_view permittedError)
{
    if (isRefused(diameter)) return kDiameterError;
    return isRefused(permittedError) ? kPermittedErrorError : nullptr;
}

bool fitsWireField(float tenthsMm) { return text::format(tenthsMm, kFieldFormat).size() == kFieldLength; }

Exchange wireSet(std::string_view addressDigits, const WireParameters& wire)
{
    const auto command = "67" + text::format(wire.diameterTenthsMm, kFieldFormat) +
                         text::format(wire.errorTenthsMm, kFieldFormat) +
                         (wire.selfCalibration ? "01" : "00") + "0000FF";
    return {.frame = frameOf(addressDigits, command), .replyLength = kWireReply, .drains = false};
}

Exchange wireQuery(std::string_view addressDigits)
{
    return {.frame = frameOf(addressDigits, "68FF"), .replyLength = kWireReply, .drains = false};
}

std::optional<WireParameters> wireOf(std::string_view reply)
{
    const auto diameter = field(reply, kDiameterPosition);
    const auto error = field(reply, kErrorPosition);
    if (!text::isNumber(diameter) || !text::isNumber(error)) return std::nullopt;
    return WireParameters{static_cast<float>(text::Val(diameter)), static_cast<float>(text::Val(error)),
                          field(reply, kSelfCalibrationPosition) == "01"};
}

bool isPlainWireReply(std::string_view reply)
{
    return text::allDigits(field(reply, kDiameterPosition)) &&
           text::allDigits(field(reply, kErrorPosition)) && flagAt(reply, kSelfCalibrationPosition);
}

std::string wireText(const WireParameters& wire, bool userEdition)
{
    auto lengths = "Diameter and permitted Error is set as " + millimetres(wire.diameterTenthsMm) + ", " +
                   millimetres(wire.errorTenthsMm) + "\r\n";
    if (userEdition) return lengths;
    return lengths + (wire.selfCalibration ? "Auto Self Calibration Function is turned ON."
                                           : "Auto Self Calibration Function is turned OFF.");
}

} // namespace quorvel::settings
