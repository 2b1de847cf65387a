#include "site/track.h"

namespace quorvel::site {

namespace {

std::optional<double> difference(const std::optional<double>& now, const std::optional<double>& then)
{
    return now && then ? std::optional(*now - *then) : std::nullopt;
}

} // namespace

void Track::take(const Reading& reading)
{
    auto& past = readouts_[reading.address];
    past.before = past.known;
    for (const auto sensor : kSensors) {
        if (const auto value = reading.mm(sensor)) past.known.at(placeOf(sensor)) = value;
    }
    past.latest = reading;
    ++past.asked;
    if (reading.complete()) ++past.answered;
}

void Track::markZero(int address)
{
    const auto* past = pastOf(address);
    if (!past) return;
    for (const auto sensor : kSensors) {
        if (const auto value = past->latest.mm(sensor)) zeros_[address].at(placeOf(sensor)) = value;
    }
}

void Track::markZero()
{
    for (const auto& [address, past] : readouts_)
        markZero(address);
}

const Track::Past* Track::pastOf(int address) const
{
    const auto found = readouts_.find(address);
    return found == readouts_.end() ? nullptr : &found->second;
}

const Reading* Track::latest(int address) const
{
    const auto* past = pastOf(address);
    return past ? &past->latest : nullptr;
}

std::optional<double> Track::changeSinceBefore(int address, protocol::Sensor sensor) const
{
    const auto* past = pastOf(address);
    return past ? difference(past->latest.mm(sensor), past->before.at(placeOf(sensor))) : std::nullopt;
}

std::optional<double> Track::changeSinceZero(int address, protocol::Sensor sensor) const
{
    const auto* past = pastOf(address);
    const auto zero = zeros_.find(address);
    if (!past || zero == zeros_.end()) return std::nullopt;
    return difference(past->latest.mm(sensor), zero->second.at(placeOf(sensor)));
}

std::int64_t Track::asked(int address) const
{
    const auto* past = pastOf(address);
    return past ? past->asked : 0;
}

std::int64_t Track::answered(int address) const
{
    const auto* past = pastOf(address);
    return past ? past->answered : 0;
}

} // namespace quorvel::site
