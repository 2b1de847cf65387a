#pragma once

#include "files/result.h"
#include "link/bench.h"
#include "protocol/direction.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <array>
#include <filesystem>
#include <optional>
#include <vector>

/// A site: the readouts of one bus, as a text file that the user opens and saves, NAME.quorvel-site.json. Its form is
/// docs/site.md for people and docs/quorvel-site.schema.json for programs:
///
///     {"name":"North dam","port":"/dev/ttyUSB0","note":"...","readouts":[
///       {"address":5,"type":"A","name":"Block 7","limitsMm":{"x":{"low":-2,"high":2}},"reference":"Zero of 2024-05-17"}]}
///
/// Keys that are not known are kept. QJsonDocument sorts the keys of an object; the readouts keep their order.
namespace quorvel::site {

inline constexpr auto kSiteEnding = ".quorvel-site.json";

inline constexpr std::size_t kSensorCount = 4;
inline constexpr std::array<protocol::Sensor, kSensorCount> kSensors{
    protocol::Sensor::X, protocol::Sensor::Y, protocol::Sensor::Z1, protocol::Sensor::Z2};
inline constexpr std::size_t placeOf(protocol::Sensor sensor) { return static_cast<std::size_t>(sensor); }

/// The name in files: "x", "y", "z1", "z2".
QString keyOf(protocol::Sensor sensor);
/// Whether readouts of this type have the sensor.
bool hasSensor(link::InstrumentType type, protocol::Sensor sensor);

/// What a value should stay within, in mm; either side may be open.
struct Limit {
    std::optional<double> low;
    std::optional<double> high;

    bool isSet() const { return low || high; }
    bool isPassedBy(double mm) const { return (low && mm < *low) || (high && mm > *high); }
    bool operator==(const Limit&) const = default;
};

/// One readout of a site.
struct Readout {
    int address = 1; ///< 1 to 249
    link::InstrumentType type = link::TypeA;
    QString name; ///< one line, may be empty
    std::array<Limit, kSensorCount> limits;
    QString reference;  ///< note on what the readings refer to
    QJsonObject asRead; ///< as it was in the file, with what is not known here

    Limit& limit(protocol::Sensor sensor) { return limits.at(placeOf(sensor)); }
    const Limit& limit(protocol::Sensor sensor) const { return limits.at(placeOf(sensor)); }
};

struct Site {
    QString name; ///< one line, may be empty
    QString port; ///< device path, COM name or tcp:host:port; empty: the first of the port list
    QString note; ///< free text
    std::vector<Readout> readouts; ///< each address once
    QJsonObject asRead;            ///< as for a readout

    /// The readout of this address; null when the site has none.
    const Readout* readoutAt(int address) const;
};

/// Reads a site.
/// @param fileName  for the reasons.
/// @return fails with everything that is wrong, one "NAME, line N: what" a line, at most kMostReasons of them; a blank
///         file is told as empty, without a line.
files::Result<Site> parseSite(const QByteArray& json, const QString& fileName);
inline constexpr int kMostReasons = 10;

/// The file of a site, indented.
QByteArray toJson(const Site& site);

/// Fails with the reason when there is no such file, it cannot be read, has more than kLongestFile bytes, or as
/// parseSite().
files::Result<Site> loadSite(const std::filesystem::path& path);
inline constexpr qint64 kLongestFile = 4'000'000;

/// Writes a site in one step (files/replace.h).
files::Status saveSite(const std::filesystem::path& path, const Site& site);

} // namespace quorvel::site
