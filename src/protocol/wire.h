#pragma once

#include "link/transaction.h"

#include <optional>
#include <string>
#include <string_view>

/// The wire parameters. The set command and the answer to the query have the same 19 characters,
/// counted from 1:
///
///     1  ":"   2-3 address   4-5 "67"   6-7 diameter x 10   8-9 permitted error x 10
///     10-11 self-calibration, "01" on   12-17 "0000FF"   18-19 line end
namespace quorvel::protocol {

inline constexpr auto kAddressError = "Address Error";
inline constexpr auto kDiameterError = "Diameter Input Error";
inline constexpr auto kPermittedErrorError = "Permitted Error Input Error";
inline constexpr auto kWireSet = "Diameter Parameters Setted OK";

/// Lengths are tenths of a millimetre, in single precision as the sums of the window are.
struct WireParameters {
    float diameterTenthsMm = 0;
    float errorTenthsMm = 0;
    bool selfCalibration = true;
};

/// The millimetres that a text begins with, as tenths; 0 without a number. Numbers beyond single precision become
/// its largest.
float tenthsOf(std::string_view millimetres);

/// What is wrong with the typed diameter and permitted error, the diameter looked at first; null when both can be
/// sent. Zero has to be typed as "0"; a number below zero or of 10 mm and more is not refused.
const char* wireInputError(std::string_view diameter, std::string_view permittedError);

/// True when the value fills its field of two digits exactly; others make the frame longer.
bool fitsWireField(float tenthsMm);

/// The set command. A fraction of a tenth is rounded, halves away from zero: 12.5 is sent as "13".
link::Transaction wireSet(std::string_view addressDigits, const WireParameters& wire);
link::Transaction wireQuery(std::string_view addressDigits);

/// The parameters in the answer to the query.
/// @return nothing when a length is not a number.
std::optional<WireParameters> wireOf(std::string_view reply);

/// True when the answer holds digits in both lengths and a state behind them, so that it can be relied on.
bool isPlainWireReply(std::string_view reply);

/// What a query shows. The user edition does not speak of self-calibration.
std::string wireText(const WireParameters& wire, bool userEdition);

} // namespace quorvel::protocol
