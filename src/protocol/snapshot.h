#pragma once

#include "link/bench.h"
#include "link/transaction.h"

#include <QJsonValue>

#include <span>
#include <string_view>
#include <variant>
#include <vector>

/// All settings of a readout as data, for backup and restore. In files and answers each has a name and a value:
///
///     wire              {"diameterMm": 1.5, "permittedErrorMm": 0.3, "selfCalibration": true}
///     offsetX, Y, Z     "+1.50000", a sign and seven places, as the readout holds them
///     referenceFeature, invertX, Y, Z, swap   true or false
///     clock             "2024-05-17T09:05:30"; one that shows no date and time as received, "20XX-17-05  09:05:30"
///     autoReading       {"mode": "interval", "hours": 1, "minutes": 0, "seconds": 0}
///                       or {"mode": "fixed", "hoursOfDay": [8, 12, 16, 20]}
///     stitching         "3665", four printable characters, blanks among them
namespace quorvel::protocol {

/// Why a value of a file is not sent.
enum class NotSent {
    ForTheRecord, ///< it cannot be set from here, or setting it makes no sense: Setting::kept says why
    Malformed     ///< not of the form above
};

struct Setting {
    const char* name;
    const char* title; ///< for people
    bool (*isFor)(link::InstrumentType type);
    link::Transaction (*query)(std::string_view addressDigits);
    /// The value in a complete reply, one that write() takes or keeps for the record; null when the reply holds
    /// none.
    QJsonValue (*read)(std::string_view reply);
    /// The command that sets the value.
    std::variant<link::Transaction, NotSent> (*write)(std::string_view addressDigits,
                                                      const QJsonValue& value);
    const char* kept = nullptr; ///< why a value can be for the record alone; null when none is
};

/// All settings, in the order in which they are asked for and set.
std::span<const Setting> settings();

/// The settings that a readout of this type can be asked for. Its clock and fixed hours of the day are among them for
/// the record: the one is out of date when it is restored, the other has no command.
std::vector<Setting> settingsOf(link::InstrumentType type);

/// What a readout told about one of its settings.
struct Told {
    QJsonValue value; ///< null when it told none
    QString why;      ///< one sentence why it told none
};
/// Reads the end of Setting::query().
Told toldBy(const Setting& setting, const link::Exchange& exchange);

/// A value in words, for one line: "on", "+1.50000", "nothing" for null, "diameterMm 1.5, permittedErrorMm
/// 0.3, selfCalibration on". Control characters become "?".
QString inWords(const QJsonValue& value);
/// A value for tables and reports: "1.5 mm, error 0.3 mm, self-calibration on", "every 1 h 0 min 0 s"; one whose form is not
/// that of a readout as inWords() does.
QString inSentence(const QJsonValue& value);

} // namespace quorvel::protocol
