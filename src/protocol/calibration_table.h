#pragma once

#include "link/transaction.h"
#include "protocol/command.h"
#include "protocol/direction.h"

#include <array>
#include <string>
#include <string_view>

/// Sending a calibration table to a readout. The frame, positions counted from 1:
///
///     1  ":"   2-3 address   4-7 command (4-9 for Z1 and Z2)   11 points of 16 characters   "FF"   CR LF
///
/// A point is the sensor reading and the dial reading, eight characters each. The k-th of the 22 values begins at
/// position 8k, two further for a command of six digits. The readout answers with the frame as it took it.
namespace quorvel::protocol {

/// Points of a calibration table, in the order of their numbers. Tables may hold more; the fit and the download use
/// these many.
inline constexpr int kPoints = 11;

/// One complete point: what the sensor read while the dial gauge stood at `dial`, both in mm.
struct Point {
    float dial = 0;
    float reading = 0;
};

using Points = std::array<Point, kPoints>;

/// What differs between the sensors.
struct TableRow {
    Sensor sensor;
    CommandId command;
    const char* downloaded;    ///< shown when the echo agreed
    const char* notDownloaded; ///< shown when it did not
};
inline constexpr TableRow kTables[] = {
    {Sensor::X, CommandId::CalibrateX, "X向标定参数下载完毕！", "X向标定参数下载失败！"},
    {Sensor::Y, CommandId::CalibrateY, "Y向标定参数下载完毕！", "Y向标定参数下载失败！"},
    {Sensor::Z1, CommandId::CalibrateZ1, "Z1向标定参数下载完毕！", "Z1向标定参数下载失败！"},
    {Sensor::Z2, CommandId::CalibrateZ2, "Z2向标定参数下载完毕！", "Z2向标定参数下载失败！"},
};
constexpr const TableRow& tableOf(Sensor sensor) { return kTables[static_cast<std::size_t>(sensor)]; }

/// A value as it is in the frame: a sign, three digits, point, three decimals. Values that round to 1000 or more come
/// out longer.
std::string FormatCalibrationNumber(double value);

/// True when a value fills its eight characters; others make the frame longer than the readout expects.
bool fitsCalibrationField(double value);

/// Sends the points; 10 s are allowed for the echo, and everything that has come is taken.
link::Transaction tableDownload(Sensor sensor, std::string_view addressDigits, const Points& points);

/// Characters of a frame of eight-character values, and so of its echo: 187, for Z1 and Z2 189.
int echoLength(Sensor sensor);

/// The largest difference between a value of the frame and the same of the echo, both read as numbers, so that what is not
/// a number counts as 0.
double echoDifference(Sensor sensor, std::string_view frame, std::string_view echo);

/// True when the frame has echoLength() characters, and each of the 22 values of the echo differs from the one sent by
/// less than 0.01. Both are read as numbers, so what is not a number counts as 0.
bool echoAgrees(Sensor sensor, std::string_view frame, std::string_view echo);

} // namespace quorvel::protocol
