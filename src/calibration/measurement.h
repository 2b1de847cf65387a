#pragma once

#include "calibration/direction.h"
#include "link/module1.h"

#include <string>
#include <string_view>

/// The talk of measuring one calibration point. The reply is that of any reading (link/values.h); older readouts leave
/// its last two characters out.
namespace quorvel::calibration {

inline constexpr int kShortMeasurement = 27; ///< characters
inline constexpr int kLongMeasurement = 29;
inline constexpr float kMeasurementTimeout = 1.5F; ///< s, for the short reply
inline constexpr float kMeasurementTail = 0.05F;   ///< s, for what a long one has more

/// The frame that asks the readout of these two address digits.
std::string measurementFrame(const Direction& direction, std::string_view addressDigits);

/// True when the reply has one of the two lengths that count as answered.
bool isMeasurement(std::string_view reply);

/// Why a reply is no measurement, as the end of a sentence: "the readout did not answer".
std::string whyNoMeasurement(std::string_view reply);

/// The whole transaction. @return everything that was received, to be checked by isMeasurement().
std::string measure(link::Module1& module1, const Direction& direction, std::string_view addressDigits);

} // namespace quorvel::calibration
