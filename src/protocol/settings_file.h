#pragma once

#include "link/bench.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <variant>

/// The file that settings are kept in, of `quorvelctl settings` and of the window "Settings" alike:
///
///     {"format": "quorvel-settings", "version": 1,
///      "address": 12, "type": "B", "saved": "2024-05-17T09:05:30",
///      "settings": {"offsetX": "+1.50000", ...}}       names and values as in snapshot.h
///
/// A file without "version" is of version 1. One without "address" or "type" is for a readout of any.
namespace quorvel::protocol {

inline constexpr int kSettingsVersion = 1;
/// Far above any file of settings, in bytes. More need not be read.
inline constexpr int kLongestSettings = 1'000'000;

struct SettingsFile {
    int address = 0;                          ///< 1 to 249; 0 when the file names none
    std::optional<link::InstrumentType> type; ///< nothing when the file names none
    QString saved;                            ///< ISO 8601, local time; as the file has it
    QJsonObject settings;                     ///< by their names; not checked
};

/// What is written to the file, as one object; it takes the present version.
QJsonObject inFile(const SettingsFile& file);
/// The text of the file.
QByteArray textOf(const SettingsFile& file);

/// Reads the text of a file: at least one setting in it. @return what is wrong with it otherwise, in words that follow
/// "FILE is not a settings file: " and end without a full stop.
std::variant<SettingsFile, QString> settingsIn(const QByteArray& text);

/// What a readout is and a file of settings is not of: "readout 12", "type B", or both; empty when they agree.
QString ofAnother(const SettingsFile& file, int address, link::InstrumentType type);

} // namespace quorvel::protocol
