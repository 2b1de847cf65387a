#include "protocol/reference.h"

#include "link/bytes.h"
#include "link/module1.h"
#include "protocol/answer.h"
#include "protocol/values.h"
#include "text/number.h"
#include "text/reply.h"

namespace quorvel::protocol {

namespace {

/// Performs a command of a run and keeps it there.
bool step(link::Module1& module1, ReferenceRun& run, const link::Transaction& transaction)
{
    run.last = module1.transact(transaction);
    return run.last.complete();
}

link::Transaction offsetWrite(const ReferenceRow& row, const std::string& address, std::string_view value)
{
    auto transaction = offsetSet(row.offset, address, value);
    transaction.drains = row.setDrains;
    transaction.echoLength = row.echoLength;
    return transaction;
}

/// Without the noise that a difference of binary numbers has: 12.3 - 12 is 0.3.
double toFiveDecimals(double value) { return text::Val(text::format(value, "0.00000")); }

/// Takes the current reading into the run.
bool readCurrent(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row, ReferenceRun& run)
{
    if (row.readingPosition == 0) {
        const bool arrived = step(module1, run, zQueryByCharacters(bench.addressDigits()));
        run.reading = firstValue(run.last.reply);
        return arrived;
    }
    const auto line = ReadSensorValues(module1, text::integerOf(link::bytes(bench.currentAddress)), bench);
    run.reading = text::mid(line, row.readingPosition, kValueLength);
    return true;
}

} // namespace

ReferenceRun setReference(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row,
                          double reference, const std::function<void()>& settling)
{
    ReferenceRun run;
    const auto address = bench.addressDigits();
    const bool answered = step(module1, run, offsetWrite(row, address, signedValue(row.offset, 0)));
    if (!run.last.frameWentOut()) return run;
    run.formerOffset = answered ? FormerOffset::Lost : FormerOffset::MayBeLost;
    if (!answered) return run;
    settling();
    module1.WaitForInput(kSettlingTime, 0);
    if (!readCurrent(module1, bench, row, run)) return run;
    run.offset = signedValue(row.offset, reference - text::Val(run.reading));
    if (row.pauseBeforeSet > 0) module1.WaitForInput(row.pauseBeforeSet, 0);
    run.complete = step(module1, run, offsetWrite(row, address, run.offset));
    run.confirmed = link::isConfirmed(run.last);
    return run;
}

ReferenceRun queryReference(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row,
                            const std::function<void(const std::string& offset)>& received)
{
    ReferenceRun run;
    auto query = offsetQuery(row.offset, bench.addressDigits());
    query.drains = row.queryDrains;
    if (!step(module1, run, query)) return run;
    run.offset = offsetOf(row.offset, run.last.reply);
    run.offsetIsAnswer = link::isAnswered(run.last);
    received(run.offset);
    run.complete = readCurrent(module1, bench, row, run);
    run.realValue = toFiveDecimals(text::Val(run.reading) - text::Val(run.offset));
    return run;
}

std::string referenceSetText(const ReferenceRun& run)
{
    return "Set OK!The current value is " + run.reading + ", the Internal Offset Value is " + run.offset +
           ".";
}

std::string realValueText(const ReferenceRow& row, double realValue)
{
    return std::string(row.realText) + text::general(realValue) + "!";
}

std::string lossText(const ReferenceRun& run)
{
    if (run.confirmed || run.formerOffset == FormerOffset::Untouched) return {};
    return run.formerOffset == FormerOffset::Lost
               ? "The former offset was overwritten with zero and is lost."
               : "The former offset may have been overwritten with zero: the "
                 "readout did not answer completely. Query it.";
}

std::string countedText(const ReferenceRun& run)
{
    if (run.offset.empty() || text::isNumber(run.reading)) return {};
    return "\"" + inOneLine(run.reading) + "\" is not a reading; it was counted as " +
           text::general(text::Val(run.reading)) + ".";
}

} // namespace quorvel::protocol
