#include "autoread/download.h"

#include "autoread/pace.h"
#include "text/number.h"

#include <utility>

namespace quorvel::autoread {

using namespace protocol;

namespace {

constexpr double kSecondsPerDay = 86400;

/// The words for a file that failed, with what is left of the download.
std::string fileFailedText(const std::string& reason, int received)
{
    return reason + " The download has stopped; the file holds the " + text::general(received) +
           " records received before. The readout still has all its data.";
}

/// One download under way.
class Run {
public:
    Run(RecordReader& reader, const RecordSpan& span, RecordSink& sink, const Watcher& watcher)
        : reader_(reader), span_(span), sink_(sink), watcher_(watcher), start_(clock().timeOfDay())
    {}

    Outcome run()
    {
        tellProgress();
        for (int count = span_.first; count < span_.end && outcome_.ending == Ending::Complete; ++count) {
            clock().letEventsRun();
            if (watcher_.stop && watcher_.stop()) {
                outcome_.ending = Ending::Stopped;
            } else {
                fetch(span_.indexOf(count));
            }
        }
        const auto closed = sink_.close();
        if (!closed && outcome_.reason.empty())
            end(Ending::FileFailed, fileFailedText(closed.error(), outcome_.received()));
        return std::move(outcome_);
    }

private:
    void fetch(int slot)
    {
        auto answer = reader_.ask(slot);
        if (answer.kind != Answer::Kind::Record) return endFor(answer);
        StoredRecord record{slot, answer.record, std::move(answer.unreadable), std::move(answer.misfits)};
        if (const auto stored = sink_.append(record.record); !stored)
            return end(Ending::FileFailed, fileFailedText(stored.error(), outcome_.received()));
        outcome_.stored.push_back(std::move(record));
        tellRemarks(outcome_.stored.back());
        tellProgress();
    }

    void endFor(const Answer& answer)
    {
        const auto broken = brokenText(outcome_.received());
        if (answer.kind == Answer::Kind::Incomplete) {
            const bool answers =
                answer.outcome == link::Outcome::Silent || answer.outcome == link::Outcome::Short;
            if (watcher_.remark && answers) watcher_.remark(answer.words);
            return end(Ending::CommError, broken);
        }
        end(Ending::Misfit, answer.words + " The download has stopped; the " +
                                text::general(outcome_.received()) +
                                " records before it are in the file, which can be continued.");
    }

    void end(Ending ending, const std::string& reason)
    {
        outcome_.ending = ending;
        outcome_.reason = reason;
    }

    void tellRemarks(const StoredRecord& record) const
    {
        if (!watcher_.remark) return;
        const auto name = "Record " + text::format(record.slot, "0000") + ": ";
        for (const auto& misfit : record.misfits) {
            watcher_.remark(name + misfit + ".");
        }
        for (const auto& field : record.unreadable) {
            watcher_.remark(name + unreadableText(field) + ".");
        }
    }

    void tellProgress() const
    {
        if (!watcher_.progress) return;
        const double now = clock().timeOfDay();
        const double passed = now < start_ ? now + kSecondsPerDay - start_ : now - start_;
        const int received = outcome_.received();
        const double questions = received == 0 && reader_.asking().verify ? 2 : 1;
        watcher_.progress({received, span_.count(),
                           questions * secondsLeft(*reader_.layout(), span_.count(), received, passed),
                           received > 0 ? &outcome_.stored.back() : nullptr});
    }

    link::Clock& clock() const { return reader_.module1().clock(); }

    RecordReader& reader_;
    RecordSpan span_;
    RecordSink& sink_;
    const Watcher& watcher_;
    double start_;
    Outcome outcome_;
};

} // namespace

Outcome fetchRecords(RecordReader& reader, const RecordSpan& span, RecordSink& sink, const Watcher& watcher)
{
    return Run(reader, span, sink, watcher).run();
}

} // namespace quorvel::autoread
