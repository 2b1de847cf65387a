#pragma once

#include "jet/database.h"
#include "protocol/calibration_table.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::calibration {

using protocol::kPoints;
using protocol::Point;
using protocol::Points;

/// Shown when a point is missing or not complete.
inline constexpr auto kDataEmpty = "Some Data is empty, Please check!";

/// The rows of a calibration table in the order of their numbers, as the grid shows and changes them.
class Records {
public:
    /// New values by the names of the columns, since write() may move columns; nothing is Null.
    using Changes = std::map<std::string, std::optional<double>>;

    Records() = default;
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;
    virtual ~Records() = default;

    /// The columns in the order of the table; none when no table is open.
    virtual const std::vector<jet::FieldDef>& fields() const = 0;
    virtual int rowCount() const = 0;
    /// @param row, column  counted from 0 and existing.
    virtual const jet::Value& value(int row, int column) const = 0;
    /// Why nothing can be written; empty when it can.
    virtual const std::string& readOnlyBecause() const = 0;
    /// Changes a row, all columns at once. When it returns true the row is on the disk; when it fails, the row has
    /// not changed. Either way there may be fewer columns afterwards.
    virtual jet::Status write(int row, const Changes& changes) = 0;
};

// The columns by position, and the names of the first two.
inline constexpr int kNumberColumn = 0;
inline constexpr int kDialColumn = 1;
inline constexpr int kReadingColumn = 2;
inline constexpr std::string_view kNumberName = "SN";
inline constexpr std::string_view kDialName = "Rule_Data";

/// Position of a column, its name in any case; -1 when there is none.
int columnOf(const std::vector<jet::FieldDef>& fields, std::string_view name);

/// The number of a cell in single precision, as the fit and the download use it. @return nothing when there is no such
/// cell, it is Null or not a finite number.
std::optional<double> singleIn(const Records& records, int row, int column);

/// The first points of the table, readings from the column given.
/// @return nothing when there are too few rows, no such column, or a value that is Null or not a finite number in
///         single precision.
std::optional<Points> pointsOf(const Records& records, int readingColumn);

} // namespace quorvel::calibration
