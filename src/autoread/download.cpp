#include "autoread/download.h"

#include "text/number.h"

namespace quorvel::autoread {

using namespace protocol;

namespace {

/// The words for a file that failed, with what is left of the download.
std::string fileFailedText(const std::string& reason, int received)
{
    return reason + " The download has stopped; the file holds the " + text::general(received) +
           " records received before. The readout still has all its data.";
}

/// The record in one slot of the readout into the sink.
Outcome fetchRecord(link::Module1& module1, std::string_view addressDigits, int slot, int received,
                    const RecordLayout& layout, RecordSink& sink)
{
    const auto exchange = module1.transact(recordFetch(addressDigits, slot, layout));
    if (!exchange.complete()) return {Ending::CommError, received, brokenText(received)};
    const auto read = readRecord(exchange.reply, layout);
    if (!read.record)
        return {Ending::BadRecord, received, badRecordText(slot, read.fault, exchange.reply, received)};
    if (const auto stored = sink.append(*read.record); !stored)
        return {Ending::FileFailed, received, fileFailedText(stored.error(), received)};
    return {Ending::Complete, received + 1, {}};
}

} // namespace

Outcome fetchRecords(link::Module1& module1, std::string_view addressDigits, const protocol::RecordSpan& span,
                     const RecordLayout& layout, RecordSink& sink, const Watcher& watcher)
{
    Outcome outcome;
    for (int count = span.first; count < span.end && outcome.ending == Ending::Complete; ++count) {
        module1.clock().letEventsRun();
        if (watcher.stop()) {
            outcome.ending = Ending::Stopped;
            break;
        }
        const int before = outcome.received;
        outcome = fetchRecord(module1, addressDigits, span.indexOf(count), before, layout, sink);
        if (outcome.received > before) watcher.received(outcome.received);
    }
    const auto closed = sink.close();
    if (!closed && outcome.reason.empty())
        return {Ending::FileFailed, outcome.received, fileFailedText(closed.error(), outcome.received)};
    return outcome;
}

} // namespace quorvel::autoread
