#pragma once

#include <QString>

#include <span>
#include <string>
#include <string_view>

/// The three directions that are calibrated, and what differs between them.
namespace quorvel::calibration {

/// One column of sensor readings: how it is measured and how it reaches the readout.
struct Reading {
    std::string_view column;                   ///< in the table
    std::string (*measured)(std::string_view); ///< its value in the reply to a measurement, as received
    std::string_view downloadCommand;          ///< command digits of the download
    const char* downloaded;                    ///< shown when the echo of a download agreed
    const char* notDownloaded;                 ///< shown when it did not
};

struct Direction {
    char letter;
    const char* file; ///< in the program's own folder
    const char* caption;
    const char* gridCaption;
    const char* hint;
    std::string_view measureCommand;
    std::span<const Reading> readings; ///< one, for Z two; the first stands in the table's third column
};

/// @return the direction of "X", "Y" or "Z"; null for any other text.
const Direction* directionOf(const QString& letter);

/// True when some direction has readings in a column of this name, in any case.
bool isReadingColumn(std::string_view column);

} // namespace quorvel::calibration
