#pragma once

#include "link/transaction.h"
#include "protocol/direction.h"

#include <string>
#include <string_view>

/// Measuring one calibration point. The reply is that of any reading (values.h); older readouts leave its last two
/// characters out.
namespace quorvel::protocol {

inline constexpr int kShortMeasurement = 27; ///< characters
inline constexpr int kLongMeasurement = 29;

/// Asks the readout of these two address digits: X and Y, or Z1 and Z2 for Z. 1.5 s are allowed for the short reply, and
/// 0.05 s for what a long one has more; everything that has come is taken.
link::Transaction measurement(Direction direction, std::string_view addressDigits);

/// True when the reply has one of the two lengths that count as answered.
bool isMeasurement(std::string_view reply);

/// Why a reply is not a measurement, as the end of a sentence: "the readout did not answer".
std::string whyNoMeasurement(std::string_view reply);

/// The reading of a sensor in a reply, eight characters as received.
std::string measuredBy(Sensor sensor, std::string_view reply);

} // namespace quorvel::protocol
