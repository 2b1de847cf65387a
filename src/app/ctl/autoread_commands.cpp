#include "app/ctl/commands.h"
#include "app/ctl/console.h"
#include "autoread/download.h"
#include "autoread/mode.h"
#include "link/address.h"
#include "link/bytes.h"
#include "main/messages.h"

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

/// One transaction; what the readout does not answer whole is told.
bool answered(Console& console, const std::string& frame, int replyLength)
{
    if (console.module1().transact(frame, static_cast<std::uint16_t>(replyLength))) return true;
    console.fail(kNotAnswered, kCommError);
    return false;
}

void showMode(Console& console)
{
    if (!console.openReadout()) return;
    if (!answered(console, autoread::modeFrame(digits(console)), autoread::kModeReplyLength)) return;
    const auto mode = autoread::readMode(console.module1().ReplyText());
    QJsonArray values;
    for (const int value : mode.values) {
        values.append(value);
    }
    console.answer(shown(autoread::modeText(mode)),
                   {{"address", console.address()}, {"mode", mode.mode}, {"values", values}});
}

void setInterval(Console& console, const std::string& wanted)
{
    if (!console.openReadout()) return;
    const auto* row = std::find_if(std::begin(autoread::kIntervals), std::end(autoread::kIntervals),
                                   [&](const auto& candidate) { return candidate.option == wanted; });
    const auto position = static_cast<int>(row - std::begin(autoread::kIntervals));
    const auto frame = autoread::intervalFrame(digits(console), position);
    if (console.module1().transact(frame, autoread::kIntervalReplyLength)) {
        console.tell(autoread::kSetOk);
    } else {
        console.fail(kNotAnswered, autoread::kSetError);
    }
}

/// The records that wait in the readout; nothing when there are none or they cannot be fetched, which is told.
std::optional<autoread::RecordSpan> askForSpan(Console& console)
{
    if (!answered(console, autoread::pointersFrame(digits(console)), autoread::kPointersReplyLength))
        return std::nullopt;
    const auto& reply = console.module1().ReplyText();
    const auto pointers = autoread::readPointers(reply);
    if (!autoread::isPlainPointersReply(reply)) {
        console.fail(kNotAnswered,
                     QStringLiteral("The answer to the question for stored records was not readable: %1")
                         .arg(shown(autoread::printable(reply))));
    } else if (pointers.isEmpty()) {
        console.tell(autoread::kNoData);
    } else if (const auto why = autoread::whyNotFetchable(pointers); !why.empty()) {
        console.fail(kNotAnswered, QString::fromStdString(why));
    } else {
        return autoread::spanOf(pointers);
    }
    return std::nullopt;
}

void fetch(Console& console, const QString& file, autoread::Existing existing,
           const autoread::RecordSpan& span)
{
    const auto& layout = autoread::layoutOf(console.bench().isThreeDirection());
    auto sink = autoread::createRecordFile(QFileInfo(file).filesystemFilePath(), layout, existing);
    if (!sink) return console.fail(kNotAnswered, QString::fromStdString(sink.error()));
    const auto outcome = autoread::fetchRecords(
        console.module1(), digits(console), span, layout, **sink,
        {[] { return false; },
         [&](int received) { console.progress(shown(autoread::receivedText(span.count(), received))); }});
    console.answer(QString::number(outcome.received),
                   {{"address", console.address()}, {"file", file}, {"records", outcome.received}});
    if (!outcome.reason.empty()) console.fail(kNotAnswered, QString::fromStdString(outcome.reason));
}

void download(Console& console, const DownloadOptions& options)
{
    const auto file = QString::fromLocal8Bit(options.file.c_str());
    const bool exists = QFileInfo::exists(file);
    if (exists && !options.force) {
        return console.fail(kNotAnswered,
                            QStringLiteral("%1 exists. Add --force to overwrite it.").arg(file));
    }
    if (!console.openReadout()) return;
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
    if (!console.openReadout()) return;
    if (answered(console, autoread::deleteFrame(digits(console)), autoread::kDeleteReplyLength))
        console.tell(autoread::kDataDeleted);
}

std::vector<std::string> intervalOptions()
{
    std::vector<std::string> options;
    for (const auto& row : autoread::kIntervals) {
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
