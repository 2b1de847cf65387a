#pragma once

#include "link/bench.h"
#include "settings/exchange.h"

#include <QJsonValue>

#include <optional>
#include <string_view>
#include <vector>

/// All settings of a readout as data, for backup and restore. In files and answers each has a name and a value:
///
///     wire              {"diameterMm": 1.5, "permittedErrorMm": 0.3, "selfCalibration": true}
///     offsetX, Y, Z     "+1.50000", the eight characters that the readout holds
///     referenceFeature, invertX, Y, Z, swap   true or false
///     clock             "2024-05-17T09:05:30"
///     autoReading       {"mode": "interval", "hours": 1, "minutes": 0, "seconds": 0}
///                       or {"mode": "fixed", "hoursOfDay": [8, 12, 16, 20]}
///     stitching         "3665", four characters
namespace quorvel::settings {

struct Setting {
    const char* name;
    bool (*isFor)(link::InstrumentType type);
    Exchange (*query)(std::string_view addressDigits);
    /// The value in a complete reply; null when the reply holds none.
    QJsonValue (*read)(std::string_view reply);
    /// The command that sets the value; nothing when it is not of the form above or cannot be set from here.
    std::optional<Exchange> (*write)(std::string_view addressDigits, const QJsonValue& value);
};

/// The settings that a readout of this type can be asked for. Its clock and fixed hours of the day are among
/// them, though neither can be restored: the one is out of date, the other has no command.
std::vector<Setting> settingsOf(link::InstrumentType type);

/// A value in words: "on", "+1.50000", "diameterMm 1.5, permittedErrorMm 0.3, selfCalibration on".
QString inWords(const QJsonValue& value);

} // namespace quorvel::settings
