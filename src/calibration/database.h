#pragma once

#include "calibration/direction.h"
#include "jet/database.h"

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

/// Calibration files: Access databases with the table `Calibration`, one row per point. Columns in this order:
///
///     SN         Integer   number of the point, 0 for the first
///     Rule_Data  Single    dial-gauge reading in mm, Null until it is typed
///     X_Data     Single    sensor reading in mm, Null until it is measured; Y_Data, or Z1_Data and Z2_Data
namespace quorvel::calibration {

inline constexpr std::string_view kTable = "Calibration";
inline constexpr std::string_view kRecordSource = "Select * from Calibration order by SN";

/// Creates the file with its table and 11 points without readings. The reading columns follow from the ten characters
/// before the ending: "XDirection", "YDirection", "ZDirection"; under any other name there are none.
/// Fails when something of that name exists, and when it cannot be written; nothing is left then.
jet::Status CreateCalibrationDatabase(const std::filesystem::path& path);

/// The same with the columns of this direction, whatever the name.
jet::Status createTableOf(const DirectionRow& direction, const std::filesystem::path& path);

/// The columns of the table `Calibration`.
/// @return fails when there is no such table, or when its columns do not begin with SN, Rule_Data and a reading
///         column, all of numbers.
/// @param path  of the database, for the reason.
jet::Result<std::vector<jet::FieldDef>> calibrationFields(const jet::Database& database,
                                                          const std::filesystem::path& path);

/// Opens the points of a calibration file in the order of their numbers. Fails when the table cannot be read or holds more
/// rows than SN can number.
jet::Result<jet::Recordset> openPoints(jet::Database& database, const std::filesystem::path& path);

/// Reads a calibration file through, without changing it. @return its columns, or why it is no calibration file.
jet::Result<std::vector<jet::FieldDef>> checkCalibrationFile(const std::filesystem::path& path);

/// Writes the table of an open file once more, in the present file format, and puts it in the file's place in one step.
/// What the file was is kept beside it. Columns that hold no numbers are left out. Ends `database`.
/// @return the name under which the older file is kept.
jet::Result<std::filesystem::path> renewFormat(jet::Database& database, const std::filesystem::path& path);

/// Copies `chosen` over the working file of a direction in one step. What it replaces is kept beside it, under the day of
/// `now` or, when it cannot be read, as "unreadable".
/// @return words for the operator, which name the copy; empty when there was nothing to keep and all is as expected. Or
///         why the working file was left alone.
jet::Result<std::string> loadWorkingFile(const std::filesystem::path& chosen,
                                         const std::filesystem::path& working, const DirectionRow& direction,
                                         std::time_t now = std::time(nullptr));

} // namespace quorvel::calibration
