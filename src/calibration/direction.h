#pragma once

#include "protocol/calibration_table.h"
#include "protocol/direction.h"

#include <QString>

#include <span>
#include <string_view>

/// The files of the three directions that are calibrated.
namespace quorvel::calibration {

using protocol::Direction;

/// One column of sensor readings.
struct ReadingColumn {
    std::string_view name; ///< in the table
    protocol::Sensor sensor;
};

/// What differs between the directions, besides what is said on the bus.
struct DirectionRow {
    Direction direction;
    const char* file; ///< in the program's own folder
    const char* caption;
    const char* gridCaption;
    const char* hint;
    std::span<const ReadingColumn> readings; ///< one, for Z two; the first is in the table's third column
};

/// @return the row of "X", "Y" or "Z"; null for any other text.
const DirectionRow* directionOf(const QString& letter);

/// True when some direction has readings in a column of this name, in any case.
bool isReadingColumn(std::string_view column);

} // namespace quorvel::calibration
