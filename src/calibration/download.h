#pragma once

#include "calibration/direction.h"
#include "calibration/points.h"
#include "link/module1.h"

#include <functional>
#include <string>
#include <string_view>

/// The talk of a calibration download. The frame, positions counted from 1:
///
///     1  ":"   2-3 address   4-7 command (4-9 for Z1 and Z2)   11 points of 16 characters   "FF"   CR LF
///
/// A point is the sensor reading and the dial reading, eight characters each. The k-th of the 22 values begins at
/// position 8k, two further for a command of six digits. The readout answers with the frame as it took it.
namespace quorvel::calibration {

inline constexpr float kEchoTimeout = 10; ///< s, for the whole echo

/// A value as it stands in the frame: a sign, three digits, point, three decimals. Values of 1000 or more come out
/// longer; the echo of such a frame cannot agree.
std::string FormatCalibrationNumber(double value);

/// The whole frame, line end included.
std::string downloadFrame(const Reading& reading, std::string_view addressDigits, const Points& points);

/// Characters of a frame of eight-character values, and so of its echo: 187, for Z1 and Z2 189.
int echoLength(const Reading& reading);

/// True when each of the 22 values of the echo differs from the one sent by less than 0.01. Both are read as numbers,
/// so what is no number counts as 0.
bool echoAgrees(const Reading& reading, std::string_view frame, std::string_view echo);

/// The whole transaction; takes about a second for sending and up to 10 s for waiting.
/// @param sent  called with the number of characters sent so far.
/// @return everything that was received: an echo only when it has echoLength() characters.
std::string sendDownload(link::Module1& module1, const Reading& reading, std::string_view frame,
                         const std::function<void(int)>& sent);

} // namespace quorvel::calibration
