#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "ctl/console.h"
#include "ctl/validators.h"
#include "link/address.h"
#include "link/interrupt.h"
#include "link/serialport.h"
#include "protocol/values.h"
#include "site/watch.h"
#include "text/number.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::ctl {

namespace {

constexpr int kDayOfSeconds = 86400;

/// The options of `watch`, as typed.
struct WatchOptions {
    std::string site;                  ///< file
    std::vector<std::string> readouts; ///< ADDRESS:TYPE
    std::string every = "10s";
    int count = 0;
    std::string format;
    std::string output;
    bool daily = false;
    bool wait = false;

    /// Whether it goes on for years, rather than watching one readout for a while.
    bool isService() const { return !site.empty() || !readouts.empty(); }
};

/// "10", "10s", "5m", "1h" in seconds; nothing for another text, or one beyond a day.
std::optional<int> secondsIn(std::string text)
{
    int unit = 1;
    if (text.ends_with('s') || text.ends_with('m') || text.ends_with('h')) {
        unit = text.back() == 's' ? 1 : text.back() == 'm' ? 60 : 3600;
        text.pop_back();
    }
    if (!text::allDigits(text) || text.size() > 5) return std::nullopt;
    const int seconds = std::stoi(text) * unit;
    return seconds >= 1 && seconds <= kDayOfSeconds ? std::optional(seconds) : std::nullopt;
}

CLI::Validator interval()
{
    return {[](std::string& text) {
                return secondsIn(text)
                           ? std::string()
                           : "\"" + text + "\" is not an interval such as 10s, 5m or 1h, at most a day";
            },
            "INTERVAL"};
}

std::optional<site::Readout> readoutIn(std::string_view text)
{
    const auto colon = text.find(':');
    const auto digits = text.substr(0, colon);
    const auto type =
        colon == std::string_view::npos ? link::TypeA : protocol::typeNamed(text.substr(colon + 1));
    if (!type || !text::allDigits(digits) || !link::isAddress(text::integerOf(digits))) return std::nullopt;
    site::Readout readout;
    readout.address = text::integerOf(digits);
    readout.type = *type;
    return readout;
}

CLI::Validator readoutOption()
{
    return {[](std::string& text) {
                return readoutIn(text) ? std::string()
                                       : "\"" + text + "\" is not a readout such as 5:A or 12:C";
            },
            "ADDRESS:TYPE"};
}

std::optional<site::Site> siteOf(Console& console, const WatchOptions& options)
{
    if (!options.site.empty()) {
        auto site = site::loadSite(pathOf(options.site));
        if (site) return std::move(*site);
        console.fail(Failure::File, QString::fromStdString(site.error()));
        return std::nullopt;
    }
    site::Site site;
    for (const auto& text : options.readouts) {
        const auto readout = readoutIn(text).value_or(site::Readout());
        if (site.readoutAt(readout.address)) {
            console.fail(Failure::Usage,
                         QStringLiteral("The readout %1 is named twice.").arg(readout.address));
            return std::nullopt;
        }
        site.readouts.push_back(readout);
    }
    if (!options.isService()) {
        auto& readout = site.readouts.emplace_back();
        readout.address = console.address();
        readout.type = console.instrumentType();
    }
    return site;
}

/// One run of `watch`.
class Watching {
public:
    Watching(Console& console, const WatchOptions& options) : console_(console), options_(options) {}

    void run()
    {
        auto site = siteOf(console_, options_);
        if (!site) return;
        if (site->readouts.empty()) {
            return console_.fail(Failure::File,
                                 QStringLiteral("The site has no readouts. Add some to its file."));
        }
        givenPort_ = console_.options.port;
        const auto device = deviceOf(*site);
        console_.options.port = device.toStdString();
        if (!console_.makeLink(Access::Reads)) return;
        auto& port = console_.module1().port();
        // A port that is opened again by itself needs nobody to run the command anew.
        if (options_.wait) link::setAdviser(link::Adviser::Service);
        // A lost port is no failure of the program here.
        QObject::disconnect(&port, &link::MSComm::lost, nullptr, nullptr);
        QObject::connect(&port, &link::MSComm::lost, &port, [this](const QString& words) { lost(words); });
        site::PortKeeper keeper(console_.module1(), console_.ports(), device,
                                [this](const QString& words) { console_.tell(words); });
        const auto reason = keeper.open();
        if (!reason.isEmpty() && !options_.wait) return console_.fail(Failure::PortNotOpened, reason);
        if (!reason.isEmpty()) console_.tell(reason + QStringLiteral(" Waiting for it."));
        if (options_.isService()) link::setAdviser(link::Adviser::Service);
        sweep(std::move(*site), keeper);
    }

private:
    QString deviceOf(const site::Site& site) const
    {
        return givenPort_.empty() ? site.port : QString::fromLocal8Bit(givenPort_.c_str());
    }

    void lost(const QString& words)
    {
        if (options_.isService()) return console_.tell(words);
        console_.fail(Failure::PortLost, words);
        ended_ = true;
    }

    site::WatchFormat format() const
    {
        if (const auto named = site::watchFormatNamed(options_.format)) return *named;
        return console_.options.json ? site::WatchFormat::Ndjson : site::WatchFormat::Text;
    }

    void sweep(site::Site site, site::PortKeeper& keeper)
    {
        site::WatchOutput::Target target{format(), pathOf(options_.output), options_.daily,
                                         [this](const QByteArray& lines) { console_.print(lines); }, nullptr};
        const bool brief = !options_.isService() && options_.format.empty() && options_.output.empty();
        if (brief && target.format == site::WatchFormat::Text) {
            target.fail = [this](const QString& words) {
                console_.fail(console_.failureOfLine().value_or(Failure::Garbled), words);
            };
        }
        site::WatchOutput output(std::move(target));
        site::Watch::Hands hands{[this] { return ended_ || console_.endRequested(); },
                                 [this](const QString& words) { console_.tell(words); }, nullptr};
        if (!options_.site.empty()) {
            link::noteReloads();
            hands.reload = [&] { return reload(keeper); };
        }
        site::Watch(console_.module1(), keeper, std::move(site), output, std::move(hands))
            .run(site::Schedule(secondsIn(options_.every).value_or(1)), options_.count);
        if (const auto written = output.finish(); !written) {
            console_.fail(Failure::File, QString::fromStdString(written.error()) +
                                             QStringLiteral(" The readings that it lacks are lost."));
        }
    }

    std::optional<site::Site> reload(site::PortKeeper& keeper)
    {
        if (!link::takeReloadRequest()) return std::nullopt;
        auto site = site::loadSite(pathOf(options_.site));
        if (!site) {
            console_.tell(QString::fromStdString(site.error()));
            console_.tell(
                QStringLiteral("The site stays as it was. Correct the file and send SIGHUP again."));
            return std::nullopt;
        }
        console_.tell(QStringLiteral("The site was read anew: %1 readouts.").arg(site->readouts.size()));
        keeper.change(deviceOf(*site));
        keeper.keepOpen();
        return std::move(*site);
    }

    Console& console_;
    const WatchOptions& options_;
    std::string givenPort_;
    bool ended_ = false;
};

/// Whether an option is on the command line, rather than in the environment.
bool isTyped(const CLI::App& app, const char* name)
{
    const auto& typed = app.parse_order();
    return std::find(typed.begin(), typed.end(), app.get_option(name)) != typed.end();
}

/// What the environment says of readouts gives way to what the command line says.
void chooseReadouts(const CLI::App& app, const CLI::App& watching, WatchOptions& options)
{
    const int ways = (isTyped(watching, "--site") ? 1 : 0) + (isTyped(watching, "--readout") ? 1 : 0) +
                     (isTyped(app, "--address") ? 1 : 0);
    if (ways > 1) throw CLI::ValidationError("--site, --readout and --address exclude each other");
    if (!isTyped(watching, "--site") && ways > 0) options.site.clear();
}

void checkTogether(const Console& console, const WatchOptions& options)
{
    const bool toFile = !options.output.empty();
    if (!options.isService() && console.options.address.empty()) {
        throw CLI::ValidationError(
            "Name a site file with --site, readouts with --readout, or one readout with --address");
    }
    if (console.options.json && !options.format.empty() && options.format != "ndjson")
        throw CLI::ValidationError("--json is --format ndjson, and excludes another format");
    if (options.daily && (!toFile || options.format == "prometheus"))
        throw CLI::ValidationError("--daily needs --output, and a format other than prometheus");
}

} // namespace

void addWatchCommand(CLI::App& app, Console& console)
{
    auto* watching = addCommand(app, "watch", "Read one readout, or a whole site, again and again",
                                "watch --site dam.quorvel-site.json --every 1m");
    const auto options = std::make_shared<WatchOptions>();
    watching->add_option("--site", options->site, "Site file; SIGHUP reads it anew")->envname("QUORVEL_SITE");
    watching->add_option("--readout", options->readouts, "A readout and its type, such as 12:C; repeatable")
        ->check(readoutOption())
        ->allow_extra_args(false);
    watching
        ->add_option("--every", options->every,
                     "Time from sweep to sweep, such as 10s, 5m or 1h, aligned to the clock (default: 10s)")
        ->check(interval());
    watching->add_option("--count", options->count, "Sweeps to take (default: until interrupted)")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    watching
        ->add_option("--format", options->format, "text, ndjson, csv, influx or prometheus (default: text)")
        ->check(CLI::IsMember({"text", "ndjson", "csv", "influx", "prometheus"}));
    watching->add_option("--output", options->output,
                         "Append to this file; with prometheus replace it in one step (default: print)");
    watching->add_flag("--daily", options->daily, "A new file each day, with its date in the name");
    watching->add_flag("--wait", options->wait, "Wait for a port that cannot be opened at the start");
    watching->callback([&app, watching, &console, options] {
        chooseReadouts(app, *watching, *options);
        checkTogether(console, *options);
        Watching(console, *options).run();
    });
}

} // namespace quorvel::ctl
