#pragma once

#include "calibration/recorddata.h"
#include "calibration/records.h"

#include <QDateTime>
#include <QString>

#include <map>
#include <optional>
#include <string_view>

/// Whose a table is.
namespace quorvel::calibration {

/// Whose the readings of the working file are. A reading counts as taken at a readout when the record holds that it was
/// and the file still holds the same.
struct Ownership {
    std::map<int, int> points; ///< how many of them by address
    int unknown = 0;           ///< points with a reading of which nothing is known
    QDateTime first, last;     ///< of the takes that count

    /// True when some were taken at another readout.
    bool isOfAnother(int address) const;
};

/// Whether a readout corrects what it reads by a table, as far as the downloads tell: nothing when they do not.
std::optional<bool> corrects(const RecordData& record, int address, std::string_view column,
                             const QDateTime& when);

/// What the working file holds at a point, seen from the takes of the record.
enum class Held {
    Nothing, ///< no reading
    Another, ///< one that the takes do not lead to
    Taken,   ///< what was taken
};
Held heldAt(const RunPoint& point, const Records& table, int row, const DirectionRow& direction);

Ownership ownershipOf(const RecordData& record, const Records& table, const DirectionRow& direction);
/// "2024-05-17 09:30 to 09:41", or one moment when both are the same to the minute.
QString spanText(const QDateTime& first, const QDateTime& last);

/// "readout 5, 2024-05-17 09:30 to 09:41." Empty when nothing is known of any.
QString ownershipText(const Ownership& ownership);
/// What stands against sending the points to a readout; empty for nothing.
QString whyNotTheirs(const Ownership& ownership, int address);

} // namespace quorvel::calibration
