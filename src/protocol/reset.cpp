#include "protocol/reset.h"

#include "link/module1.h"
#include "protocol/answer.h"
#include "protocol/feature.h"
#include "protocol/offset.h"
#include "protocol/readout_clock.h"
#include "protocol/ring.h"
#include "protocol/schedule.h"
#include "protocol/switches.h"
#include "protocol/wire.h"

#include <algorithm>

namespace quorvel::protocol {

namespace {

using link::InstrumentType;
using Address = std::string_view;

constexpr auto kDiameter = "1.5";
constexpr auto kPermittedError = "0.3";

link::Transaction defaultWire(Address address, const QDateTime& /*now*/)
{
    return wireSet(address, {tenthsOf(kDiameter), tenthsOf(kPermittedError), true});
}

link::Transaction featureOff(Address address, const QDateTime& /*now*/) { return featureSet(address, false); }

template<OffsetNumber row>
link::Transaction offsetZero(Address address, const QDateTime& /*now*/)
{
    return offsetSet(kOffsets[row], address, signedValue(kOffsets[row], 0));
}

template<SwitchNumber row>
link::Transaction switchOff(Address address, const QDateTime& /*now*/)
{
    return switchSet(kSwitches[row], address, false);
}

link::Transaction oneHour(Address address, const QDateTime& /*now*/)
{
    return intervalSet(address, kOneHour);
}

link::Transaction deleteReadings(Address address, const QDateTime& /*now*/) { return recordsDelete(address); }

constexpr ResetStep kSteps[] = {
    {"wire parameters", always, defaultWire},           {"reference feature off", always, featureOff},
    {"X offset to zero", always, offsetZero<kXRow>},    {"Y offset to zero", hasY, offsetZero<kYRow>},
    {"Z offset to zero", hasZ, offsetZero<kZRow>},      {"X inversion off", always, switchOff<kInvertXRow>},
    {"swap of X and Y off", hasY, switchOff<kSwapRow>}, {"Y inversion off", hasY, switchOff<kInvertYRow>},
    {"Z inversion off", hasZ, switchOff<kInvertZRow>},  {"clock", always, clockSet},
    {"interval of one hour", always, oneHour},          {"stored readings deleted", always, deleteReadings},
};

} // namespace

std::vector<ResetStep> resetSteps(InstrumentType type)
{
    std::vector<ResetStep> steps;
    std::copy_if(std::begin(kSteps), std::end(kSteps), std::back_inserter(steps),
                 [type](const ResetStep& step) { return step.isFor(type); });
    return steps;
}

ResetRun runReset(link::Module1& module1, const link::Bench& bench,
                  const std::function<void(const std::string& step)>& progress)
{
    const auto steps = resetSteps(bench.instrumentType);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto where = "step " + std::to_string(i + 1) + " of " + std::to_string(steps.size()) + " (" +
                           steps[i].what + ")";
        progress(where);
        auto transaction = steps[i].make(bench.addressDigits(), module1.clock().now());
        transaction.drains = true;
        const auto exchange = module1.transact(transaction);
        if (!link::isConfirmed(exchange)) return {false, where, static_cast<int>(i), whyFailed(exchange)};
    }
    return {true, {}, static_cast<int>(steps.size()), {}};
}

} // namespace quorvel::protocol
