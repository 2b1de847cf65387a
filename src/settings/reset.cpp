#include "settings/reset.h"

#include "link/module1.h"
#include "settings/feature.h"
#include "settings/offset.h"
#include "settings/readout_clock.h"
#include "settings/switches.h"
#include "settings/wire.h"

#include <algorithm>

namespace quorvel::settings {

namespace {

using link::InstrumentType;
using Address = std::string_view;

constexpr auto kDiameter = "1.5";
constexpr auto kPermittedError = "0.3";
constexpr int kIntervalReplyLength = 19;
constexpr int kDeleteReplyLength = 9;

Exchange defaultWire(Address address, const QDateTime& /*now*/)
{
    return wireSet(address, {tenthsOf(kDiameter), tenthsOf(kPermittedError), true});
}

Exchange featureOff(Address address, const QDateTime& /*now*/) { return featureSet(address, false); }

template<DirectionRow row>
Exchange offsetZero(Address address, const QDateTime& /*now*/)
{
    return offsetSet(kDirections[row], address, signedValue(kDirections[row], 0));
}

template<SwitchNumber row>
Exchange switchOff(Address address, const QDateTime& /*now*/)
{
    return switchSet(kSwitches[row], address, false);
}

Exchange oneHour(Address address, const QDateTime& /*now*/)
{
    return {.frame = frameOf(address, "050101000000FF"), .replyLength = kIntervalReplyLength};
}

Exchange deleteReadings(Address address, const QDateTime& /*now*/)
{
    return {.frame = frameOf(address, "25FF"), .replyLength = kDeleteReplyLength};
}

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
        auto exchange = steps[i].make(bench.addressDigits(), module1.clock().now());
        exchange.drains = true;
        if (!perform(module1, exchange) || !confirms(exchange, module1.ReplyText()))
            return {false, where, whyFailed(exchange, module1.ReplyText(), module1.port())};
    }
    return {true, {}, {}};
}

} // namespace quorvel::settings
