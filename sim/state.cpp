#include "sim/state.h"

#include "sim/json.h"
#include "sim/text.h"

namespace quorvelsim {

namespace {

std::string offsets(const Readout& readout)
{
    json::Object object;
    for (std::size_t i = 0; i < kAxisNames.size(); ++i)
        object.add(kAxisNames[i], json::text(readout.offsets[i]));
    return object.str();
}

std::string switches(const Readout& readout)
{
    return json::Object()
        .add("swap", json::boolean(readout.isOn(Switch::Swap)))
        .add("invertX", json::boolean(readout.isOn(Switch::InvertX)))
        .add("invertY", json::boolean(readout.isOn(Switch::InvertY)))
        .add("invertZ", json::boolean(readout.isOn(Switch::InvertZ)))
        .str();
}

std::string wire(const Readout& readout)
{
    return json::Object()
        .add("diameter", json::number(readout.diameterTenthsMm / 10.0, 1))
        .add("error", json::number(readout.errorTenthsMm / 10.0, 1))
        .add("selfCalibration", json::boolean(readout.selfCalibration))
        .str();
}

std::string autoReading(const Readout& readout)
{
    std::vector<std::string> values;
    for (const int value : readout.autoReading.values)
        values.push_back(json::number(value));
    return json::Object()
        .add("mode", json::number(readout.autoReading.mode))
        .add("values", json::array(values))
        .str();
}

std::string ring(const Readout& readout)
{
    const auto& ring = readout.ring;
    const auto* newest = ring.stored() > 0 ? ring.at(ring.slotBefore(1)) : nullptr;
    return json::Object()
        .add("capacity", json::number(ring.capacity()))
        .add("first", json::number(ring.first()))
        .add("next", json::number(ring.next()))
        .add("stored", json::number(ring.stored()))
        .add("newest", newest == nullptr ? "null" : json::text(isoTime(newest->time)))
        .str();
}

std::string calibration(const Readout& readout)
{
    json::Object object;
    for (std::size_t i = 0; i < kSensorNames.size(); ++i) {
        std::vector<std::string> points;
        for (const auto& point : readout.calibration[i].points())
            points.push_back(json::array({json::number(point.reading, 3), json::number(point.dial, 3)}));
        object.add(kSensorNames[i], json::array(points));
    }
    return object.str();
}

std::string values(const Readout& readout, const Readout::Values& values)
{
    json::Object object;
    for (std::size_t i = 0; i < kSensorNames.size(); ++i) {
        const bool there = readout.type->sensors[i].pixels > 0;
        object.add(kSensorNames[i], there ? json::number(values[i], 5) : "null");
    }
    return object.str();
}

} // namespace

std::string stateOf(const Readout& readout, double now)
{
    return json::Object()
        .add("address", json::number(readout.address))
        .add("type", json::text(readout.type->name()))
        .add("offsets", offsets(readout))
        .add("reference", json::boolean(readout.reference))
        .add("switches", switches(readout))
        .add("wire", wire(readout))
        .add("clock", json::text(isoTime(readout.clock.at(now))))
        .add("auto", autoReading(readout))
        .add("ring", ring(readout))
        .add("stitching", json::text(readout.stitching))
        .add("calibration", calibration(readout))
        .add("place", values(readout, readout.places(now)))
        .add("reading", values(readout, readout.readings(now)))
        .str();
}

} // namespace quorvelsim
