#include "settings/reference.h"

#include "link/bytes.h"
#include "link/module1.h"
#include "link/values.h"
#include "text/number.h"
#include "text/reply.h"

namespace quorvel::settings {

namespace {

/// Performs a command of a run and keeps it there.
bool step(link::Module1& module1, ReferenceRun& run, Exchange exchange)
{
    run.last = std::move(exchange);
    return perform(module1, run.last);
}

Exchange offsetWrite(const ReferenceRow& row, const std::string& address, std::string_view value)
{
    auto exchange = offsetSet(row.direction, address, value);
    exchange.drains = row.setDrains;
    exchange.echoLength = row.echoLength;
    return exchange;
}

/// Without the noise that a difference of binary numbers has: 12.3 - 12 is 0.3.
double toFiveDecimals(double value) { return text::Val(text::format(value, "0.00000")); }

/// Takes the current reading into the run.
bool readCurrent(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row, ReferenceRun& run)
{
    if (row.readingPosition == 0) {
        const bool arrived = step(module1, run,
                                  {.frame = frameOf(bench.addressDigits(), link::kReadZ),
                                   .replyLength = link::kValuesReplyLength,
                                   .drains = false});
        run.reading = link::firstValue(module1.ReplyText());
        return arrived;
    }
    const auto line = module1.ReadSensorValues(text::integerOf(link::bytes(bench.currentAddress)), bench);
    run.reading = text::mid(line, row.readingPosition, kValueLength);
    return true;
}

} // namespace

ReferenceRun setReference(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row,
                          double reference, const std::function<void()>& settling)
{
    ReferenceRun run;
    const auto address = bench.addressDigits();
    if (!step(module1, run, offsetWrite(row, address, signedValue(row.direction, 0)))) return run;
    run.zeroed = true;
    settling();
    module1.WaitForInput(kSettlingTime, 0);
    if (!readCurrent(module1, bench, row, run)) return run;
    run.offset = signedValue(row.direction, reference - text::Val(run.reading));
    if (row.pauseBeforeSet > 0) module1.WaitForInput(row.pauseBeforeSet, 0);
    run.complete = step(module1, run, offsetWrite(row, address, run.offset));
    run.confirmed = run.complete && confirms(run.last, module1.ReplyText());
    return run;
}

ReferenceRun queryReference(link::Module1& module1, const link::Bench& bench, const ReferenceRow& row,
                            const std::function<void(const std::string& offset)>& received)
{
    ReferenceRun run;
    auto query = offsetQuery(row.direction, bench.addressDigits());
    query.drains = row.queryDrains;
    if (!step(module1, run, query)) return run;
    run.offset = offsetOf(row.direction, module1.ReplyText());
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

} // namespace quorvel::settings
