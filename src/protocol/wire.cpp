#include "protocol/wire.h"

#include "protocol/answer.h"
#include "protocol/command.h"
#include "text/number.h"

#include <algorithm>
#include <limits>

namespace quorvel::protocol {

namespace {

enum class WireField : std::size_t { Diameter, PermittedError, SelfCalibration };
constexpr std::size_t kFieldLength = 2;
constexpr auto kFieldFormat = "00";
constexpr auto kMillimetreFormat = "0.0";

bool isRefused(std::string_view text) { return tenthsOf(text) == 0 && text != "0"; }

std::string_view wireField(std::string_view reply, WireField index)
{
    return field(CommandId::QueryWire, static_cast<std::size_t>(index), reply);
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

link::Transaction wireSet(std::string_view addressDigits, const WireParameters& wire)
{
    return transaction(CommandId::SetWire, addressDigits,
                       text::format(wire.diameterTenthsMm, kFieldFormat) +
                           text::format(wire.errorTenthsMm, kFieldFormat) +
                           (wire.selfCalibration ? "01" : "00") + "0000");
}

link::Transaction wireQuery(std::string_view addressDigits)
{
    return transaction(CommandId::QueryWire, addressDigits);
}

std::optional<WireParameters> wireOf(std::string_view reply)
{
    const auto diameter = wireField(reply, WireField::Diameter);
    const auto error = wireField(reply, WireField::PermittedError);
    if (!text::isNumber(diameter) || !text::isNumber(error)) return std::nullopt;
    return WireParameters{static_cast<float>(text::Val(diameter)), static_cast<float>(text::Val(error)),
                          wireField(reply, WireField::SelfCalibration) == "01"};
}

bool isPlainWireReply(std::string_view reply)
{
    return text::allDigits(wireField(reply, WireField::Diameter)) &&
           text::allDigits(wireField(reply, WireField::PermittedError)) &&
           flagIn(wireField(reply, WireField::SelfCalibration));
}

std::string wireText(const WireParameters& wire, bool userEdition)
{
    auto lengths = "Diameter and permitted Error is set as " + millimetres(wire.diameterTenthsMm) + ", " +
                   millimetres(wire.errorTenthsMm) + "\r\n";
    if (userEdition) return lengths;
    return lengths + (wire.selfCalibration ? "Auto Self Calibration Function is turned ON."
                                           : "Auto Self Calibration Function is turned OFF.");
}

} // namespace quorvel::protocol
