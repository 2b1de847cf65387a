#include "calibration/downloadnote.h"

#include "link/bytes.h"
#include "text/number.h"

namespace quorvel::calibration {

std::optional<DownloadNote> noteOf(const ReadingColumn& reading, int address, bool zeros,
                                   const link::Exchange& exchange)
{
    if (exchange.sent == 0) return std::nullopt;
    DownloadNote note;
    note.at = exchange.begun;
    note.address = address;
    note.column = reading.name;
    note.zeros = zeros;
    note.frame = exchange.transaction.frame;
    while (note.frame.ends_with('\n') || note.frame.ends_with('\r'))
        note.frame.pop_back();
    if (static_cast<int>(exchange.reply.size()) != protocol::echoLength(reading.sensor)) return note;
    const auto& frame = exchange.transaction.frame;
    note.largestDifference = protocol::echoDifference(reading.sensor, frame, exchange.reply);
    note.verdict =
        protocol::echoAgrees(reading.sensor, frame, exchange.reply) ? Verdict::Agrees : Verdict::Differs;
    return note;
}

QString textOf(const DownloadNote& note)
{
    const auto what = note.zeros ? QStringLiteral("table of zeros for %1").arg(link::shown(note.column))
                                 : QStringLiteral("table of %1").arg(link::shown(note.column));
    switch (note.verdict) {
    case Verdict::Agrees:
        return QStringLiteral("Readout %1 took the %2 and repeated it, with a largest difference of %3 mm.")
            .arg(note.address)
            .arg(what, link::shown(text::format(note.largestDifference.value_or(0), "0.000")));
    case Verdict::Differs:
        return QStringLiteral(
                   "Readout %1 repeated the %2 otherwise, with a largest difference of %3 mm. Send it again.")
            .arg(note.address)
            .arg(what, link::shown(text::format(note.largestDifference.value_or(0), "0.000")));
    case Verdict::Incomplete:
        break;
    }
    return QStringLiteral("Readout %1 did not repeat the %2 whole. Check the address and send it again.")
        .arg(note.address)
        .arg(what);
}

} // namespace quorvel::calibration
