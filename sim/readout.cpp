#include "sim/readout.h"

#include "sim/civil.h"
#include "sim/noise.h"
#include "sim/text.h"

#include <algorithm>
#include <utility>

namespace quorvelsim {

namespace {

constexpr int kRingCapacity = 1000;
constexpr int kRingFill = 200;
constexpr std::uint64_t kLongestRecord = 64; // characters, and some
constexpr std::uint64_t kNoisyStream = 9;

std::optional<CivilSeconds> nextFixedTime(const std::array<int, 4>& hours, CivilSeconds time)
{
    std::optional<CivilSeconds> next;
    const auto midnight = time - time % kDay;
    for (const int hour : hours) {
        auto candidate = midnight + hour * kHour;
        if (candidate <= time) candidate += kDay;
        if (hour < 24 && (!next || candidate < *next)) next = candidate;
    }
    return next;
}

} // namespace

CivilSeconds AutoReading::interval() const
{
    return mode == kInterval ? values[0] * kHour + values[1] * kMinute + values[2] : 0;
}

std::optional<CivilSeconds> AutoReading::after(CivilSeconds time) const
{
    if (mode != kInterval) return nextFixedTime(values, time);
    return interval() > 0 ? std::optional(time + interval()) : std::nullopt;
}

Readout::Readout(int readoutAddress, const ReadoutType& readoutType, std::uint64_t seed,
                 CivilSeconds clockAtStart)
    : address(readoutAddress), type(&readoutType), clock(clockAtStart), wire(seed, readoutAddress)
{
    fillRing(kRingCapacity, 0, kRingFill, 0);
    restartAutoReading(0);
}

Readout::Values Readout::places(double now) const
{
    Values places{};
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (type->sensors[i].pixels == 0) continue;
        places[i] = pinned[i] ? *pinned[i] : wire.place(static_cast<Sensor>(i), type->sensors[i], now);
    }
    return places;
}

Readout::Values Readout::readings(double now) const
{
    constexpr std::array<Axis, 4> kAxisOf{Axis::X, Axis::Y, Axis::Z, Axis::Z};
    constexpr std::array<Switch, 3> kInvertOf{Switch::InvertX, Switch::InvertY, Switch::InvertZ};
    auto values = places(now);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = calibration[i].correct(values[i]);
    if (isOn(Switch::Swap) && type->has(Sensor::Y)) std::swap(values[0], values[1]);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto axis = kAxisOf[i];
        if (isOn(kInvertOf[static_cast<std::size_t>(axis)])) values[i] = -values[i];
        values[i] = type->sensors[i].pixels > 0 ? values[i] + offset(axis) : 0;
    }
    return values;
}

std::vector<std::string> Readout::recordFields(int slot) const
{
    const auto* stored = ring.at(slot);
    const auto record = stored != nullptr ? *stored : Record{};
    std::vector<std::string> fields{stored != nullptr ? busTime(record.time) : std::string(12, '0')};
    for (std::size_t i = 0; i < (type->has(Sensor::Z1) ? 4U : 2U); ++i)
        fields.push_back(recordField(record.values[i]));
    std::uint64_t index = static_cast<std::uint64_t>(slot) * kLongestRecord;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        for (auto& character : fields[i]) {
            ++index;
            if (record.noisy[i]) character = noiseByte(wire.seed(), kNoisyStream, index);
        }
    }
    return fields;
}

void Readout::putClockOff(CivilSeconds by, double now)
{
    clock.shift(by);
    for (int slot = 0; slot < ring.capacity(); ++slot) {
        const auto* stored = ring.at(slot);
        if (stored == nullptr) continue;
        auto record = *stored;
        record.time += by;
        ring.put(slot, record);
    }
    restartAutoReading(now);
}

double Readout::offset(Axis axis) const
{
    return signedNumber(offsets[static_cast<std::size_t>(axis)]).value_or(0);
}

void Readout::catchUp(double now)
{
    const auto time = clock.at(now);
    // After a long sleep of the machine only the readings that still fit into the ring are worth taking.
    const auto interval = autoReading.interval();
    if (nextRecord_ && interval > 0) {
        const auto missed = (time - *nextRecord_) / interval - ring.capacity();
        if (missed > 0) *nextRecord_ += missed * interval;
    }
    while (nextRecord_ && *nextRecord_ <= time) {
        ring.append({*nextRecord_, readings(now - static_cast<double>(time - *nextRecord_))});
        nextRecord_ = autoReading.after(*nextRecord_);
    }
}

void Readout::restartAutoReading(double now) { nextRecord_ = autoReading.after(clock.at(now)); }

void Readout::takeRecord(double now) { ring.append({clock.at(now), readings(now)}); }

void Readout::fillRing(int capacity, int first, int next, double now)
{
    ring = Ring(capacity, first, next);
    const auto written = next < first ? capacity : ring.stored();
    const auto time = clock.at(now);
    const auto step = std::max<CivilSeconds>(autoReading.interval(), 1);
    const auto newest = time - time % step;
    for (int back = 1; back <= written; ++back) {
        const auto taken = newest - (back - 1) * step;
        ring.put(ring.slotBefore(back), {taken, readings(now - static_cast<double>(time - taken))});
    }
}

} // namespace quorvelsim
