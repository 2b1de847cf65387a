#include "autoread/visit.h"
#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "files/name.h"
#include "protocol/ring.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace quorvel::ctl {

namespace {

using autoread::Visit;

/// What the person wants of a download.
struct DownloadOptions {
    std::string file;
    bool goesOn = false;
    autoread::Asking asking;
};

QString sentence(const std::string& text) { return QString::fromStdString(text); }

std::vector<std::filesystem::path> pathsOf(const std::vector<std::string>& names)
{
    std::vector<std::filesystem::path> paths(names.size());
    std::transform(names.begin(), names.end(), paths.begin(), pathOf);
    return paths;
}

/// The readout at --address, with a book for this one run.
class Station {
public:
    Station(Console& console, const autoread::Asking& asking)
        : visit(console.module1(), console.address(), console.bench().instrumentType, book_, asking)
    {}

private:
    autoread::Book book_;

public:
    Visit visit;
};

constexpr int kOwnRetries = 2; ///< for what is not a download
constexpr int kMostRetries = 100;

void showRing(Console& console)
{
    if (!console.openReadout(Access::Reads)) return;
    Station station(console, {.retries = kOwnRetries});
    const auto ring = station.visit.askRing();
    if (!ring)
        return console.fail(console.failureOfLine().value_or(Failure::Garbled), sentence(ring.error()));
    const auto text = sentence(autoread::text(*ring, console.address())).trimmed();
    console.answer(text, autoread::json(*ring, console.address()));
}

autoread::Watcher watch(Console& console)
{
    return {.stop = [&console] { return console.endRequested(); },
            .progress =
                [&console](const autoread::Progress& progress) {
                    if (progress.received == 0) return;
                    console.progress(sentence(protocol::receivedText(progress.total, progress.received)));
                },
            .remark = [&console](const std::string& text) { console.tell(sentence(text)); }};
}

/// What a download failed of.
Failure failureIn(const Console& console, const autoread::Report& report)
{
    const bool file = report.fileFailed || report.ending == autoread::Ending::FileFailed;
    return file ? Failure::File : console.failureOfLine().value_or(Failure::Garbled);
}

void answerReport(Console& console, const autoread::Report& report)
{
    const bool begun = report.ending != autoread::Ending::NotBegun;
    if (begun) console.answer(QString::number(report.received), autoread::json(report));
    if (report.reason == protocol::kNoData) return console.tell(protocol::kNoData);
    for (const auto& finding : report.findings) {
        // the others were said when they came
        if (finding.kind >= autoread::Finding::Kind::Gap) console.tell(sentence(autoread::text(finding)));
    }
    if (!report.keptOld.empty()) {
        console.tell(QStringLiteral("The file that was there before is kept as %1.")
                         .arg(sentence(files::inWords(report.keptOld))));
    }
    if (!report.reason.empty()) console.fail(failureIn(console, report), sentence(report.reason));
}

void continueDownload(Console& console, const DownloadOptions& options, Visit& visit)
{
    const auto plan = visit.plan(pathOf(options.file));
    if (!plan) return console.fail(console.failureOfLine().value_or(Failure::File), sentence(plan.error()));
    if (plan->isPossible()) console.tell(sentence(plan->words));
    if (plan->needsConsent() && plan->isPossible() &&
        !console.agrees(
            QStringLiteral("Continue %1 all the same?").arg(sentence(files::inWords(pathOf(options.file)))),
            Access::Reads)) {
        return console.fail(Failure::Unsafe,
                            QStringLiteral("Nothing was fetched. Add --yes to continue all the same."));
    }
    answerReport(console, visit.continueFile(*plan, watch(console)));
}

void download(Console& console, const DownloadOptions& options)
{
    if (!console.checkReadout()) return;
    const auto path = pathOf(options.file);
    const bool exists = files::isThere(path);
    if (exists && !console.options.force && !options.goesOn) {
        return console.fail(
            Failure::Exists,
            QStringLiteral("%1 exists. Add --force to overwrite it, or --continue to go on in it.")
                .arg(sentence(files::inWords(path))));
    }
    if (!console.openPort(Access::Reads)) return;
    Station station(console, options.asking);
    if (options.asking.verify) {
        console.tell(
            QStringLiteral("Each record is asked for until two replies agree: this takes twice the time."));
    }
    if (options.goesOn) return continueDownload(console, options, station.visit);
    const auto existing = exists ? autoread::Existing::Replace : autoread::Existing::Keep;
    answerReport(console, station.visit.download(path, existing, watch(console)));
}

void check(Console& console, const std::vector<std::string>& files)
{
    if (!console.openReadout(Access::Reads)) return;
    Station station(console, {.retries = kOwnRetries});
    const auto result = station.visit.check(pathsOf(files));
    console.answer(sentence(result.words), autoread::json(result));
    if (!result.safe) console.note(console.failureOfLine().value_or(Failure::Unsafe));
}

/// Whether the files hold what would be deleted; says so. @return false when the deletion is not to be.
bool mayClear(Console& console, const std::vector<std::string>& taken, Visit& visit)
{
    if (taken.empty()) return true;
    const auto result = visit.check(pathsOf(taken));
    if (result.safe) {
        console.tell(sentence(result.words));
        return true;
    }
    console.fail(console.failureOfLine().value_or(Failure::Unsafe),
                 sentence(result.words) + QStringLiteral(" Nothing was deleted."));
    return false;
}

void clearRing(Console& console, const std::vector<std::string>& taken)
{
    if (!console.checkReadout()) return;
    if (!console.agrees(QStringLiteral("This deletes the records stored in readout %1. Delete them?")
                            .arg(console.address())))
        return console.fail(Failure::NeedsYes, QStringLiteral("Nothing was deleted. Add --yes to do it."));
    if (!console.openPort(Access::Writes)) return;
    Station station(console, {.retries = kOwnRetries});
    if (!mayClear(console, taken, station.visit)) return;
    const auto deletion = station.visit.deleteRecords();
    const auto words = sentence(deletion.words);
    if (!deletion.certain())
        return console.fail(console.failureOfLine().value_or(Failure::Unconfirmed), words);
    console.tell(protocol::kDataDeleted);
    console.answer(words, {{"address", console.address()}, {"deleted", true}, {"words", words}});
}

void addDownload(CLI::App& app, Console& console)
{
    auto* command = addCommand(app, "download", "Fetch the stored records of a readout into a file",
                               "--address 5 download --retries 3 readout-5.mdb");
    const auto options = std::make_shared<DownloadOptions>();
    command->add_option("FILE", options->file, "Database to make; CSV when the name ends in .csv")
        ->required();
    command->add_flag("--continue", options->goesOn, "Go on behind the last row of FILE");
    addForce(*command, console);
    command->add_flag("--yes", console.options.yes, "Continue FILE although the records do not follow");
    command
        ->add_option("--retries", options->asking.retries, "Ask again so often for a reply that does not fit")
        ->check(CLI::Range(0, kMostRetries));
    command->add_flag("--verify", options->asking.verify,
                      "Ask for each record until two replies agree; takes twice the time");
    command->callback([&console, options] { download(console, *options); });
}

void addClear(CLI::App& app, Console& console)
{
    auto* command = addCommand(app, "clear", "Delete the stored records of a readout; asks first",
                               "--address 5 clear --yes --taken readout-5.mdb");
    const auto taken = std::make_shared<std::vector<std::string>>();
    addYes(*command, console);
    command->add_option("--taken", *taken, "Only when these files hold all its records");
    command->callback([&console, taken] { clearRing(console, *taken); });
}

} // namespace

void addStoredCommands(CLI::App& app, Console& console)
{
    addCommand(app, "ring", "Print what a readout has stored, and its clock", "--address 5 ring")
        ->callback([&console] { showRing(console); });
    addDownload(app, console);
    auto* checking = addCommand(app, "check", "Are all stored records of a readout in files?",
                                "--address 5 check readout-5.mdb");
    const auto files = std::make_shared<std::vector<std::string>>();
    checking->add_option("FILE", *files, "Files of earlier downloads")->required();
    checking->callback([&console, files] { check(console, *files); });
    addClear(app, console);
}

} // namespace quorvel::ctl
