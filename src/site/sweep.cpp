#include "site/sweep.h"

#include "link/address.h"
#include "link/module1.h"
#include "protocol/meaning.h"
#include "protocol/measurement.h"
#include "protocol/shape.h"
#include "protocol/values.h"
#include "text/number.h"

#include <cmath>

namespace quorvel::site {

namespace {

using protocol::Direction;
using protocol::Sensor;

constexpr auto kNoValue = "no value";

std::string wordsFor(protocol::Verdict verdict) { return std::string(protocol::nameOf(verdict)); }

/// How a reading ended.
std::string outcomeOf(const link::Exchange& exchange, protocol::CommandId id,
                      const std::string& addressDigits)
{
    if (!exchange.complete()) return protocol::outcomeOf(exchange);
    switch (protocol::shapeOf(id, addressDigits, exchange.reply)) {
    case protocol::Shape::Good:
    case protocol::Shape::Brief:
        return wordsFor(protocol::Verdict::Complete);
    case protocol::Shape::BadValue:
        return kNoValue;
    default:
        return wordsFor(protocol::Verdict::NotTheAnswer);
    }
}

/// Asks for one pair of values.
class Asking {
public:
    Asking(link::Module1& module1, const Readout& readout)
        : module1_(module1), readout_(readout), digits_(link::AddressToHex(readout.address))
    {}

    link::Exchange ask(Direction direction, const std::array<Sensor, 2>& sensors, Reading& reading)
    {
        auto exchange = module1_.transact(protocol::measurement(direction, digits_));
        const auto id = direction == Direction::Z ? protocol::CommandId::ReadZ : protocol::CommandId::ReadXY;
        reading.outcome = outcomeOf(exchange, id, digits_);
        if (reading.complete()) {
            keep(sensors[0], protocol::firstValue(exchange.reply), reading);
            keep(sensors[1], protocol::secondValue(exchange.reply), reading);
        } else {
            // What comes late must not be taken for the answer of the next one.
            module1_.settle(protocol::kPauseAfterValues);
        }
        return exchange;
    }

private:
    void keep(Sensor sensor, const std::string& value, Reading& reading) const
    {
        if (hasSensor(readout_.type, sensor)) reading.received.at(placeOf(sensor)) = value;
    }

    link::Module1& module1_;
    const Readout& readout_;
    std::string digits_;
};

} // namespace

bool Reading::complete() const { return outcome == protocol::nameOf(protocol::Verdict::Complete); }

std::optional<double> Reading::mm(Sensor sensor) const
{
    const auto& text = received.at(placeOf(sensor));
    return text ? std::optional(text::Val(*text)) : std::nullopt;
}

Reading takeReading(link::Module1& module1, const Readout& readout)
{
    Reading reading;
    reading.address = readout.address;
    reading.time = module1.clock().now();
    if (!module1.port().PortOpen()) {
        reading.outcome = wordsFor(protocol::Verdict::PortLost);
        return reading;
    }
    Asking asking(module1, readout);
    const auto exchange = asking.ask(Direction::X, {Sensor::X, Sensor::Y}, reading);
    if (reading.complete() && exchange.lastIn && exchange.lastOut)
        reading.answerMs = std::round((*exchange.lastIn - *exchange.lastOut) * 1e4) / 10;
    if (reading.complete() && readout.type == link::TypeC) {
        module1.WaitForInput(protocol::kPauseBeforeZ, 0);
        asking.ask(Direction::Z, {Sensor::Z1, Sensor::Z2}, reading);
    }
    return reading;
}

Sweep takeSweep(link::Module1& module1, const std::vector<Readout>& readouts, const SweepWatcher& watcher)
{
    Sweep sweep;
    sweep.begun = module1.clock().now();
    sweep.readings.reserve(readouts.size());
    for (const auto& readout : readouts) {
        sweep.stopped = watcher.stop && watcher.stop();
        if (sweep.stopped) break;
        sweep.readings.push_back(takeReading(module1, readout));
        if (watcher.taken) watcher.taken(sweep.readings.back());
    }
    sweep.ended = module1.clock().now();
    return sweep;
}

std::vector<Sensor> limitsPassed(const Readout& readout, const Reading& reading)
{
    std::vector<Sensor> passed;
    for (const auto sensor : kSensors) {
        const auto value = reading.mm(sensor);
        if (value && readout.limit(sensor).isPassedBy(*value)) passed.push_back(sensor);
    }
    return passed;
}

} // namespace quorvel::site
