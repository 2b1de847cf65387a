#include "autoread/visit.h"

#include "files/name.h"
#include "files/replace.h"
#include "link/address.h"

#include <utility>

namespace quorvel::autoread {

using namespace protocol;

namespace {

namespace fs = std::filesystem;

/// Whether a file could be made under this name, before anything is asked for.
jet::Status mayMake(const fs::path& path, Existing existing)
{
    if (existing == Existing::Keep && files::isThere(path))
        return jet::Failure{files::inWords(path) + " exists. Choose another name."};
    return files::mayReplace(path);
}

Report notBegun(Report report, const std::string& reason)
{
    report.ending = Ending::NotBegun;
    report.reason = reason;
    return report;
}

Report noFile(Report report, const std::string& reason)
{
    report.fileFailed = true;
    return notBegun(std::move(report), reason);
}

Ending endingOf(const Answer& answer)
{
    return answer.kind == Answer::Kind::Incomplete ? Ending::CommError : Ending::Misfit;
}

} // namespace

Visit::Visit(link::Module1& module1, int address, link::InstrumentType type, Book& book, const Asking& asking)
    : module1_(module1), address_(address), type_(type), book_(book),
      reader_(module1, link::AddressToHex(address), std::nullopt, asking)
{}

std::int64_t Visit::now() const { return module1_.clock().now().toSecsSinceEpoch(); }

std::string Visit::type() const
{
    const bool hasZ = reader_.layout() ? *reader_.layout() == kThreeDirections : type_ == link::TypeC;
    if (hasZ) return "C";
    if (type_ == link::TypeC) return "two-direction";
    return std::string(1, static_cast<char>('A' + (type_ - link::TypeA)));
}

jet::Result<RingState> Visit::askRing()
{
    auto state = autoread::askRing(reader_);
    if (!state) return state;
    book_.asked(address_, state->pointers, now());
    mode_ = state->mode;
    clock_ = state->clock;
    return state;
}

Report Visit::beginReport(const fs::path& path) const
{
    Report report;
    report.address = address_;
    report.type = type();
    report.file = path;
    report.verified = reader_.asking().verify;
    return report;
}

/// The first record tells the columns. @return false when it does not come.
bool Visit::learnLayout(const RecordSpan& span, Report& report)
{
    if (reader_.layout()) return true;
    const auto& answer = reader_.askAhead(span.indexOf(span.first));
    if (answer.kind == Answer::Kind::Record && reader_.layout()) return true;
    report.ending = endingOf(answer);
    report.reason = answer.kind == Answer::Kind::Incomplete ? brokenText(0) : answer.words;
    return false;
}

Report Visit::download(const fs::path& path, Existing existing, const Watcher& watcher)
{
    auto report = beginReport(path);
    const auto pointers = askPointers(module1_, reader_.addressDigits(), reader_.asking());
    if (!pointers) return notBegun(report, pointers.error());
    book_.asked(address_, *pointers, now());
    if (pointers->isEmpty()) return notBegun(report, kNoData);
    if (const auto may = mayMake(path, existing); !may) return noFile(report, may.error());
    const auto span = spanOf(*pointers);
    report.expected = span.count();
    if (!learnLayout(span, report)) return report;
    report.type = type();
    auto made = createRecordFile(path, *reader_.layout(), existing);
    if (!made) return noFile(report, made.error());
    book_.began(path);
    fetch(*made->sink, span, watcher, report, std::nullopt);
    report.keptOld = settleOld(made->keptOld, report.complete());
    book_.kept(address_, report.keptOld);
    book_.keepReport(report);
    return report;
}

jet::Result<ContinuePlan> Visit::plan(const fs::path& path)
{
    const auto ring = askRing();
    if (!ring) return ring.failure();
    return planContinuing(reader_, *ring, address_, path);
}

Report Visit::continueFile(const ContinuePlan& plan, const Watcher& watcher)
{
    auto report = beginReport(plan.path);
    report.continued = true;
    report.rowsBefore = plan.rows;
    report.expected = plan.toFetch.count();
    if (!plan.isPossible()) return noFile(report, plan.words);
    if (stampOf(plan.path) != plan.stamp)
        return noFile(report, files::inWords(plan.path) + " has changed meanwhile. Choose it again.");
    if (report.expected == 0) {
        report.ending = Ending::Complete;
        return report;
    }
    auto sink = openRecordFile(plan.path, plan.layout);
    if (!sink) return noFile(report, sink.error());
    fetch(**sink, plan.toFetch, watcher, report, plan.lastRow);
    book_.keepReport(report);
    return report;
}

void Visit::fetch(RecordSink& sink, const RecordSpan& span, const Watcher& watcher, Report& report,
                  const std::optional<Record>& before)
{
    auto told = watcher;
    told.progress = [&](const Progress& progress) {
        if (progress.latest && progress.latest->isSound())
            book_.stored(address_, report.file, span, span.first + progress.received - 1);
        if (watcher.progress) watcher.progress(progress);
    };
    const auto outcome = fetchRecords(reader_, span, sink, told);
    book_.finished(report.file);
    askForReport(report, outcome.ending);
    fill(report, outcome, before, reader_.counts());
}

/// What the report says of the readout; a line that has just failed is not asked again.
void Visit::askForReport(Report& report, Ending ending)
{
    const bool works = ending == Ending::Complete || ending == Ending::FileFailed;
    if (works && !mode_) mode_ = askMode(module1_, reader_.addressDigits());
    if (works && !clock_) clock_ = askClock(module1_, reader_.addressDigits());
    report.interval = intervalSeconds(mode_);
    report.clock = clock_;
}

CheckResult Visit::check(const std::vector<fs::path>& files)
{
    auto result = checkFiles(reader_, address_, files);
    book_.checked(result, now());
    return result;
}

Deletion Visit::deleteRecords()
{
    auto deletion = autoread::deleteRecords(module1_, reader_.addressDigits(), address_);
    book_.deleted(address_, deletion);
    return deletion;
}

} // namespace quorvel::autoread
