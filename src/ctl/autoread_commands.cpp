#include "autoread/download.h"
#include "ctl/commands.h"
#include "ctl/console.h"
#include "ctl/exchanges.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/ring.h"
#include "protocol/schedule.h"

#include <QFileInfo>
#include <QJsonArray>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::ctl {

namespace {

using link::shown;

/// What the person wants of a download.
struct DownloadOptions {
    std::string file;
    bool force = false;
};

std::string digits(const Console& console) { return link::AddressToHex(console.address()); }

void showMode(Console& console)
{
    if (!console.openReadout(Access::Reads)) return;
    const auto asked = ask(console, protocol::modeQuery(digits(console)));
    if (!asked) return;
    const auto mode = protocol::readMode(asked->reply);
    QJsonArray values;
    for (const int value : mode.values) {
        values.append(value);
    }
    console.answer(shown(protocol::modeText(mode)),
                   {{"address", console.address()}, {"mode", mode.mode}, {"values", values}});
}

void setInterval(Console& console, const std::string& wanted)
{
    if (!console.openReadout(Access::Writes)) return;
    const auto* row = std::ranges::find(protocol::kIntervals, wanted, &protocol::IntervalRow::option);
    const auto position = static_cast<int>(row - std::begin(protocol::kIntervals));
    const auto exchange = console.module1().transact(protocol::intervalSet(digits(console), position));
    if (exchange.complete()) {
        console.tell(protocol::kScheduleSet);
    } else {
        failed(console, protocol::kScheduleNotSet, exchange);
    }
}

/// The records that wait in the readout; nothing when there are none or they cannot be fetched, which is told.
std::optional<protocol::RecordSpan> askForSpan(Console& console)
{
    const auto asked = ask(console, protocol::pointersQuery(digits(console)));
    if (!asked) return std::nullopt;
    const auto& reply = asked->reply;
    const auto pointers = protocol::readPointers(reply);
    if (!protocol::isPlainPointersReply(reply)) {
        console.fail(kNotAnswered,
                     QStringLiteral("The answer to the query for stored records could not be read: %1")
                         .arg(shown(protocol::printable(reply))));
    } else if (pointers.isEmpty()) {
        console.tell(protocol::kNoData);
    } else if (const auto why = protocol::whyNotFetchable(pointers); !why.empty()) {
        console.fail(kNotAnswered, QString::fromStdString(why));
    } else {
        return protocol::spanOf(pointers);
    }
    return std::nullopt;
}

void fetch(Console& console, const QString& file, autoread::Existing existing,
           const protocol::RecordSpan& span)
{
    const auto& layout = protocol::layoutOf(console.bench().isThreeDirection());
    auto sink = autoread::createRecordFile(QFileInfo(file).filesystemFilePath(), layout, existing);
    if (!sink) return console.fail(kNotAnswered, QString::fromStdString(sink.error()));
    const auto outcome = autoread::fetchRecords(
        console.module1(), digits(console), span, layout, **sink,
        {[&console] { return console.endRequested(); },
         [&](int received) { console.progress(shown(protocol::receivedText(span.count(), received))); }});
    console.answer(QString::number(outcome.received),
                   {{"address", console.address()}, {"file", file}, {"records", outcome.received}});
    if (!outcome.reason.empty()) console.fail(kNotAnswered, QString::fromStdString(outcome.reason));
}

void download(Console& console, const DownloadOptions& options)
{
    if (!console.checkReadout()) return;
    const auto file = QString::fromLocal8Bit(options.file.c_str());
    const bool exists = QFileInfo::exists(file);
    if (exists && !options.force) {
        return console.fail(kNotAnswered,
                            QStringLiteral("%1 exists. Add --force to overwrite it.").arg(file));
    }
    if (!console.openPort(Access::Reads)) return;
    const auto span = askForSpan(console);
    if (span) fetch(console, file, exists ? autoread::Existing::Replace : autoread::Existing::Keep, *span);
}

void clearRing(Console& console, bool sure)
{
    if (!sure) {
        return console.fail(
            kWrongUsage,
            QStringLiteral("This deletes the records stored in the readout. Add --yes to do it."));
    }
    if (!console.openReadout(Access::Writes)) return;
    if (ask(console, protocol::recordsDelete(digits(console)))) console.tell(protocol::kDataDeleted);
}

std::vector<std::string> intervalOptions()
{
    std::vector<std::string> options;
    for (const auto& row : protocol::kIntervals) {
        options.emplace_back(row.option);
    }
    return options;
}

} // namespace

void addAutoreadCommands(CLI::App& app, Console& console)
{
    auto* mode = app.add_subcommand("auto", "Show how a readout takes readings on its own");
    const auto interval = std::make_shared<std::string>();
    mode->add_option("--set", *interval, "Take readings at this interval from now on")
        ->check(CLI::IsMember(intervalOptions()));
    mode->callback(
        [&console, interval] { interval->empty() ? showMode(console) : setInterval(console, *interval); });

    auto* fetching = app.add_subcommand("download", "Fetch the stored records of a readout into a file");
    const auto options = std::make_shared<DownloadOptions>();
    fetching->add_option("FILE", options->file, "Database to make; CSV when the name ends in .csv")
        ->required();
    fetching->add_flag("--force", options->force, "Overwrite FILE when it exists");
    fetching->callback([&console, options] { download(console, *options); });

    auto* clearing = app.add_subcommand("clear", "Delete the stored records of a readout");
    const auto sure = std::make_shared<bool>(false);
    clearing->add_flag("--yes", *sure, "Without this, nothing is deleted");
    clearing->callback([&console, sure] { clearRing(console, *sure); });
}

} // namespace quorvel::ctl
