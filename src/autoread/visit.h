#pragma once

#include "autoread/book.h"
#include "autoread/check.h"
#include "autoread/continuing.h"
#include "autoread/download.h"
#include "autoread/report.h"
#include "autoread/ring_state.h"
#include "link/bench.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// Taking stored readings home: what a window and the command line do with one readout. Nothing here shows or asks the
/// operator anything; what needs a consent is a step of its own.
///
///     Visit visit(module1, 5, link::TypeA, book, {.retries = 3});
///     const auto ring = visit.askRing();                  // what is there
///     const auto report = visit.download(path, Existing::Keep, watcher);
///     const auto plan = visit.plan(path);                 // next month: what would follow
///     if (plan && plan->isPossible() && (!plan->needsConsent() || agreed(plan->words)))
///         const auto report = visit.continueFile(*plan, watcher);
///     const auto check = visit.check({path});             // safe to delete?
///     if (check.safe || agreed(check.words)) const auto deletion = visit.deleteRecords();
namespace quorvel::autoread {

/// One readout, for as long as a handler runs. The book learns of everything that is asked, stored, checked and deleted.
class Visit {
public:
    /// @param address  1 to 249.
    /// @param type     as selected; whether there is Z is told by the readout.
    Visit(link::Module1& module1, int address, link::InstrumentType type, Book& book, const Asking& asking);

    /// What the ring holds. @return fails with the reason when the readout does not answer well.
    jet::Result<RingState> askRing();

    /// Fetches the whole ring into a new file, in the order of its slots from the oldest record on. The file is made when
    /// the first record has come, with the columns that it asks for; an earlier one is replaced only then, is kept as a
    /// dated copy until the new one holds all its records, and beyond that when it does not (Report::keptOld).
    ///
    /// Ends with Ending::NotBegun and a reason, or kNoData, when there is nothing to fetch or no file can be made.
    /// Afterwards mode and clock are asked for unless askRing() has done so.
    Report download(const std::filesystem::path& path, Existing existing, const Watcher& watcher);

    /// What would follow in the file of an earlier download. See planContinuing().
    jet::Result<ContinuePlan> plan(const std::filesystem::path& path);

    /// Fetches what the plan names into its file. The consent is the caller's. Ends with Ending::NotBegun when the file
    /// has changed since the plan, or cannot be written, or the plan is not possible. When nothing is new, the file is not
    /// touched.
    Report continueFile(const ContinuePlan& plan, const Watcher& watcher);

    /// Safe to delete?
    CheckResult check(const std::vector<std::filesystem::path>& files);

    /// Deletes without a question, and asks whether the ring is empty. For after check().
    Deletion deleteRecords();

    /// "A" ... "D", with what the readout has told: "C" exactly when it has Z.
    std::string type() const;
    /// What has happened on the line since the visit began.
    const LineCounts& line() const { return reader_.counts(); }

private:
    Report beginReport(const std::filesystem::path& path) const;
    bool learnLayout(const protocol::RecordSpan& span, Report& report);
    void fetch(RecordSink& sink, const protocol::RecordSpan& span, const Watcher& watcher, Report& report,
               const std::optional<Record>& before);
    void askForReport(Report& report, Ending ending);
    std::int64_t now() const;

    link::Module1& module1_;
    int address_;
    link::InstrumentType type_;
    Book& book_;
    RecordReader reader_;
    std::optional<protocol::AutoMode> mode_;
    std::optional<ClockReading> clock_;
};

} // namespace quorvel::autoread
