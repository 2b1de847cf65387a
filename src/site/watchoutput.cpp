#include "site/watchoutput.h"

#include "files/replace.h"
#include "site/readinglines.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quorvel::site {

namespace {

/// For somebody who watches one readout: "14:05:20  X: +1.50000  Y: -0.25000".
QString briefLine(const Reading& reading)
{
    return reading.time.toString(QStringLiteral("HH:mm:ss")) + valuesText(reading);
}

constexpr std::string_view kFormatNames[] = {"text", "ndjson", "csv", "influx", "prometheus"};

} // namespace

std::string_view nameOf(WatchFormat format) { return kFormatNames[static_cast<std::size_t>(format)]; }

std::optional<WatchFormat> watchFormatNamed(std::string_view name)
{
    const auto* found = std::find(std::begin(kFormatNames), std::end(kFormatNames), name);
    if (found == std::end(kFormatNames)) return std::nullopt;
    return static_cast<WatchFormat>(found - std::begin(kFormatNames));
}

WatchOutput::WatchOutput(Target target)
    : target_(std::move(target)),
      log_(target_.file, {hasHeader() ? csvHeader() : QByteArray(), target_.daily})
{}

QByteArray WatchOutput::lineOf(const Site& site, const Reading& reading) const
{
    const auto* readout = site.readoutAt(reading.address);
    if (!readout) return {};
    const Place place{site.name, *readout};
    switch (target_.format) {
    case WatchFormat::Ndjson:
        return ndjsonLine(place, reading);
    case WatchFormat::Csv:
        return csvRow(place, reading);
    case WatchFormat::Influx:
        return influxLine(place, reading);
    default:
        return textLine(place, reading);
    }
}

void WatchOutput::take(const Site& site, const Reading& reading)
{
    if (target_.format == WatchFormat::Prometheus) return;
    if (target_.fail && !reading.complete()) {
        const auto words = reading.outcome == "silent"
                               ? QStringLiteral("did not answer")
                               : "answered badly: " + QString::fromStdString(reading.outcome);
        return target_.fail(
            QStringLiteral("%1  readout %2 %3.").arg(briefLine(reading)).arg(reading.address).arg(words));
    }
    if (target_.fail) return target_.print(briefLine(reading).toUtf8() + '\n');
    const auto line = lineOf(site, reading);
    if (!target_.file.empty()) {
        if (!day_) day_ = reading.time.date();
        (void)log_.append(*day_, line); // what fails waits, and is told when the sweep has ended
        return;
    }
    const bool first = !std::exchange(begun_, true);
    target_.print(first && hasHeader() ? csvHeader() + line : line);
}

files::Status WatchOutput::end(const Site& site, const Sweep& sweep, const WatchCounts& counts, bool portOpen)
{
    if (target_.format == WatchFormat::Prometheus) {
        if (sweep.stopped) return {};
        const auto text = prometheusText(site, sweep, counts, portOpen);
        // The exporter reads every file that ends in .prom.
        if (target_.file.empty()) {
            target_.print(text);
        } else {
            replaced_ = files::replaceContent(target_.file, text.toStdString(), {.hidden = true});
        }
        return replaced_;
    }
    day_.reset();
    return log_.flush();
}

files::Status WatchOutput::finish()
{
    return target_.format == WatchFormat::Prometheus ? replaced_ : log_.flush();
}

} // namespace quorvel::site
