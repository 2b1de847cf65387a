#include "site/prometheus.h"

#include "link/bytes.h"
#include "text/number.h"

namespace quorvel::site {

namespace {

constexpr double kMmPerMetre = 1000;
constexpr double kMsPerSecond = 1000;

/// The text of a label, in its quotation marks.
std::string labelled(const char* key, const std::string& value)
{
    std::string written(key);
    written += "=\"";
    for (const char character : value) {
        if (character == '\\' || character == '"') written += '\\';
        written += character;
    }
    return written + '"';
}

std::string withoutNumbers(const std::string& outcome)
{
    return outcome.substr(0, outcome.find_first_of("0123456789") - 1);
}

/// Lines of one metric after the other.
class Exposition {
public:
    explicit Exposition(const Site& site) : site_(labelled("site", site.name.toStdString())) {}

    void begin(const char* name, const char* type, const char* help)
    {
        name_ = name;
        text_ += std::string("# HELP ") + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
    }
    void add(const std::string& labels, double value)
    {
        text_ += name_ + '{' + site_ + labels + "} " + text::general(value) + '\n';
    }
    void only(const char* name, const char* type, const char* help, double value)
    {
        begin(name, type, help);
        add({}, value);
    }
    const std::string& text() const { return text_; }

private:
    std::string site_;
    std::string name_;
    std::string text_;
};

std::string labelsOf(const Readout& readout)
{
    return ',' + labelled("address", std::to_string(readout.address)) + ',' +
           labelled("name", readout.name.toStdString()) + ',' +
           labelled("type", std::string(protocol::nameOf(readout.type)));
}

std::string labelsOf(const Readout& readout, protocol::Sensor sensor)
{
    return labelsOf(readout) + ',' + labelled("direction", keyOf(sensor).toStdString());
}

/// Calls `each` with every value of a sweep and where it is from.
template<class Each>
void forEachValue(const Site& site, const Sweep& sweep, const Each& each)
{
    for (const auto& reading : sweep.readings) {
        const auto* readout = site.readoutAt(reading.address);
        for (const auto sensor : kSensors) {
            const auto mm = reading.mm(sensor);
            if (readout && mm) each(*readout, sensor, *mm);
        }
    }
}

void addReadings(Exposition& out, const Site& site, const Sweep& sweep, const WatchCounts& counts)
{
    out.begin("quorvel_position_meters", "gauge", "Where a readout saw the wire in the last sweep.");
    forEachValue(site, sweep, [&](const Readout& readout, protocol::Sensor sensor, double mm) {
        out.add(labelsOf(readout, sensor), mm / kMmPerMetre);
    });
    out.begin("quorvel_limit_passed", "gauge", "Whether a position is beyond the limits of the site file.");
    forEachValue(site, sweep, [&](const Readout& readout, protocol::Sensor sensor, double mm) {
        const auto& limit = readout.limit(sensor);
        if (limit.isSet()) out.add(labelsOf(readout, sensor), limit.isPassedBy(mm) ? 1 : 0);
    });
    out.begin("quorvel_readout_up", "gauge", "Whether a readout gave its whole reading in the last sweep.");
    for (const auto& reading : sweep.readings) {
        if (const auto* readout = site.readoutAt(reading.address))
            out.add(labelsOf(*readout), reading.complete() ? 1 : 0);
    }
    out.begin("quorvel_readings_total", "counter", "Readings by how they ended, since the program began.");
    for (const auto& [key, count] : counts.readings) {
        if (const auto* readout = site.readoutAt(key.first))
            out.add(labelsOf(*readout) + ',' + labelled("outcome", key.second), static_cast<double>(count));
    }
}

} // namespace

void WatchCounts::add(const Sweep& sweep)
{
    ++sweeps;
    for (const auto& reading : sweep.readings)
        ++readings[{reading.address, withoutNumbers(reading.outcome)}];
}

QByteArray prometheusText(const Site& site, const Sweep& sweep, const WatchCounts& counts, bool portOpen)
{
    Exposition out(site);
    addReadings(out, site, sweep, counts);
    out.only("quorvel_port_up", "gauge", "Whether the port is open.", portOpen ? 1 : 0);
    out.only("quorvel_sweep_end_timestamp_seconds", "gauge", "When the last sweep ended, as Unix time.",
             static_cast<double>(sweep.ended.toMSecsSinceEpoch()) / kMsPerSecond);
    out.only("quorvel_sweep_duration_seconds", "gauge", "How long the last sweep took.",
             static_cast<double>(sweep.begun.msecsTo(sweep.ended)) / kMsPerSecond);
    out.only("quorvel_sweeps_total", "counter", "Sweeps since the program began.",
             static_cast<double>(counts.sweeps));
    out.only("quorvel_sweeps_skipped_total", "counter",
             "Moments left out because the sweep before had not ended, since the program began.",
             static_cast<double>(counts.skipped));
    return QByteArray::fromStdString(out.text());
}

} // namespace quorvel::site
