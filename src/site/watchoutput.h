#pragma once

#include "files/result.h"
#include "site/prometheus.h"
#include "site/readinglog.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace quorvel::site {

/// What the readings of a watch are written as.
enum class WatchFormat { Text, Ndjson, Csv, Influx, Prometheus };

/// "text", "ndjson", "csv", "influx", "prometheus", and the format of such a name; nothing for any other.
std::string_view nameOf(WatchFormat format);
std::optional<WatchFormat> watchFormatNamed(std::string_view name);
inline constexpr int kWatchFormats = 5;

/// Where the readings of a watch go: each at once; what goes to a file is on the disk when the sweep has ended. A
/// Prometheus file is replaced in one step, under a name that the exporter does not read before it is whole.
class WatchOutput {
public:
    struct Target {
        WatchFormat format = WatchFormat::Text;
        std::filesystem::path file = {}; ///< empty: print
        bool daily = false;              ///< a file for each day; not for Prometheus
        std::function<void(const QByteArray&)> print = {};
        /// Where the words of a failed reading go, instead of a line; empty: there is a line. With it a line of text has
        /// only the time of day and the values, as somebody who watches one readout needs it.
        std::function<void(const QString&)> fail = {};
    };

    explicit WatchOutput(Target target);

    /// A reading of the sweep that is under way.
    void take(const Site& site, const Reading& reading);
    /// The sweep has ended. A Prometheus file is not written for one that was stopped.
    /// @return fails when the file cannot be written; the lines of this sweep wait then (ReadingLog::append).
    files::Status end(const Site& site, const Sweep& sweep, const WatchCounts& counts, bool portOpen);
    /// No sweep follows: tries what the file has not taken yet once more.
    /// @return fails when the file lacks readings, or is that of an earlier sweep.
    files::Status finish();

private:
    QByteArray lineOf(const Site& site, const Reading& reading) const;
    bool hasHeader() const { return target_.format == WatchFormat::Csv; }

    Target target_;
    ReadingLog log_;
    std::optional<QDate> day_;    ///< on which the sweep that is under way began
    files::Status replaced_ = {}; ///< of the Prometheus file
    bool begun_ = false;
};

} // namespace quorvel::site
