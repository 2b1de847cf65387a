#include "sim/settings.h"

#include "sim/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace quorvelsim {

namespace {

/// One key: what is set, and the form of its value. The whole row is handed on so that keys which do the same
/// to different members share a function.
struct Key {
    std::string_view name;
    std::string_view form;
    int which;
    bool (*set)(Readout&, const Key&, std::string_view value, double now);
};

constexpr int kFarthestClock = 3653 * 86400; // seconds

std::optional<double> plainNumber(std::string_view text)
{
    double value = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    const bool isNumber = result.ec == std::errc{} && result.ptr == end && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

std::optional<bool> onOff(std::string_view text)
{
    if (text == "on") return true;
    if (text == "off") return false;
    return std::nullopt;
}

std::size_t which(const Key& key) { return static_cast<std::size_t>(key.which); }

bool setPlace(Readout& readout, const Key& key, std::string_view value, double /*now*/)
{
    const auto place = plainNumber(value);
    if (place || value == "free") readout.pinned[which(key)] = place;
    return place || value == "free";
}

bool setOffset(Readout& readout, const Key& key, std::string_view value, double /*now*/)
{
    if (value.size() == 8) readout.offsets[which(key)] = value;
    return value.size() == 8;
}

bool setSwitch(Readout& readout, const Key& key, std::string_view value, double /*now*/)
{
    const auto on = onOff(value);
    if (on) readout.switches[which(key)] = *on;
    return on.has_value();
}

bool setReference(Readout& readout, const Key& /*key*/, std::string_view value, double /*now*/)
{
    const auto on = onOff(value);
    readout.reference = on.value_or(readout.reference);
    return on.has_value();
}

bool setSelfCalibration(Readout& readout, const Key& /*key*/, std::string_view value, double /*now*/)
{
    const auto on = onOff(value);
    readout.selfCalibration = on.value_or(readout.selfCalibration);
    return on.has_value();
}

bool setTenths(Readout& readout, const Key& key, std::string_view value, double /*now*/)
{
    const auto tenths = decimal(value);
    if (!tenths || *tenths > 99) return false;
    (key.which == 0 ? readout.diameterTenthsMm : readout.errorTenthsMm) = *tenths;
    return true;
}

bool setClock(Readout& readout, const Key& /*key*/, std::string_view value, double now)
{
    const auto time = fromIsoTime(value);
    if (!time) return false;
    readout.clock.set(*time, now);
    readout.restartAutoReading(now);
    return true;
}

bool putClockOff(Readout& readout, const Key& /*key*/, std::string_view value, double now)
{
    const auto seconds = decimal(value.starts_with('-') ? value.substr(1) : value);
    if (!seconds || *seconds > kFarthestClock) return false;
    readout.putClockOff(value.starts_with('-') ? -*seconds : *seconds, now);
    return true;
}

/// `which` is the mode.
bool setMode(Readout& readout, const Key& key, std::string_view value, double now)
{
    AutoReading wanted{key.which, {}};
    for (auto& number : wanted.values) {
        const auto word = nextWord(value);
        const auto given = decimal(word.empty() && key.which == AutoReading::kInterval ? "0" : word);
        if (!given || *given > 99) return false;
        number = *given;
    }
    readout.autoReading = wanted;
    readout.restartAutoReading(now);
    return true;
}

bool setRing(Readout& readout, const Key& /*key*/, std::string_view value, double now)
{
    const auto shape = ringShape(value);
    if (shape) readout.fillRing(shape->capacity, shape->first, shape->next, now);
    return shape.has_value();
}

/// "SLOT" or "SLOT,FIELD".
bool setNoisy(Readout& readout, const Key& /*key*/, std::string_view value, double /*now*/)
{
    constexpr std::array<std::string_view, 5> kFields{"date", "x", "y", "z1", "z2"};
    const auto comma = value.find(',');
    const auto slot = decimal(value.substr(0, comma));
    const auto* stored = slot ? readout.ring.at(*slot) : nullptr;
    const auto field = comma == std::string_view::npos ? std::string_view{} : value.substr(comma + 1);
    const bool isField = std::find(kFields.begin(), kFields.end(), field) != kFields.end();
    if (stored == nullptr || (comma != std::string_view::npos && !isField)) return false;
    auto record = *stored;
    for (std::size_t i = 0; i < kFields.size(); ++i)
        record.noisy[i] = record.noisy[i] || !isField || kFields[i] == field;
    readout.ring.put(*slot, record);
    return true;
}

bool setStitching(Readout& readout, const Key& /*key*/, std::string_view value, double /*now*/)
{
    if (value.size() == 4) readout.stitching = value;
    return value.size() == 4;
}

bool setReadingLength(Readout& readout, const Key& /*key*/, std::string_view value, double /*now*/)
{
    const auto length = decimal(value);
    if (length.value_or(0) != 27 && length.value_or(0) != 29) return false;
    readout.readingLength = *length;
    return true;
}

/// "SENSOR MM DEPTH WIDTH" or "clean".
bool setDust(Readout& readout, const Key& /*key*/, std::string_view value, double /*now*/)
{
    constexpr double kWidest = 10; // mm
    if (value == "clean") {
        readout.dust.clear();
        readout.ownDust = false;
        return true;
    }
    constexpr std::array<std::string_view, 4> kSensors{"x", "y", "z1", "z2"};
    const auto sensor = std::find(kSensors.begin(), kSensors.end(), nextWord(value));
    const auto place = plainNumber(nextWord(value));
    const auto percent = plainNumber(nextWord(value));
    const auto width = plainNumber(nextWord(value));
    if (sensor == kSensors.end() || !place || !percent || !width || !nextWord(value).empty()) return false;
    if (*percent < 0 || *percent > 100 || *width <= 0 || *width > kWidest) return false;
    readout.dust.push_back({static_cast<Sensor>(sensor - kSensors.begin()), *place, *percent / 100, *width});
    return true;
}

constexpr std::string_view kPlaceForm = "millimetres, or free";
constexpr std::string_view kOffsetForm = "8 characters";
constexpr std::string_view kOnOffForm = "on or off";
constexpr std::string_view kTenthsForm = "tenths of a millimetre, 0 to 99";

constexpr Key kKeys[] = {
    {"x", kPlaceForm, static_cast<int>(Sensor::X), setPlace},
    {"y", kPlaceForm, static_cast<int>(Sensor::Y), setPlace},
    {"z1", kPlaceForm, static_cast<int>(Sensor::Z1), setPlace},
    {"z2", kPlaceForm, static_cast<int>(Sensor::Z2), setPlace},
    {"offsetx", kOffsetForm, static_cast<int>(Axis::X), setOffset},
    {"offsety", kOffsetForm, static_cast<int>(Axis::Y), setOffset},
    {"offsetz", kOffsetForm, static_cast<int>(Axis::Z), setOffset},
    {"swap", kOnOffForm, static_cast<int>(Switch::Swap), setSwitch},
    {"invertx", kOnOffForm, static_cast<int>(Switch::InvertX), setSwitch},
    {"inverty", kOnOffForm, static_cast<int>(Switch::InvertY), setSwitch},
    {"invertz", kOnOffForm, static_cast<int>(Switch::InvertZ), setSwitch},
    {"reference", kOnOffForm, 0, setReference},
    {"selfcalibration", kOnOffForm, 0, setSelfCalibration},
    {"diameter", kTenthsForm, 0, setTenths},
    {"error", kTenthsForm, 1, setTenths},
    {"clock", "YYYY-MM-DDTHH:MM:SS", 0, setClock},
    {"clockoff", "seconds forward, or back with -, up to ten years", 0, putClockOff},
    {"interval", "HOURS MINUTES SECONDS", AutoReading::kInterval, setMode},
    {"fixed", "four hours of the day", AutoReading::kFixedTimes, setMode},
    {"ring", "CAPACITY,FIRST,NEXT", 0, setRing},
    {"noisy", "SLOT[,FIELD], a slot that was written and date, x, y, z1 or z2", 0, setNoisy},
    {"stitching", "4 characters", 0, setStitching},
    {"readinglength", "27 or 29", 0, setReadingLength},
    {"dust", "x, y, z1 or z2 with place and width in mm and percent between them (x 37.3 27 0.2), or clean",
     0, setDust},
};

std::string keyNames()
{
    std::string names;
    for (const auto& key : kKeys)
        names += " " + std::string(key.name);
    return names;
}

} // namespace

std::string applySetting(Readout& readout, std::string_view text, double now)
{
    const auto name = nextWord(text);
    const auto value = text.substr(std::min(text.find_first_not_of(' '), text.size()));
    for (const auto& key : kKeys) {
        if (key.name != name) continue;
        if (key.set(readout, key, value, now)) return {};
        return "the value of " + std::string(name) + " is " + std::string(key.form);
    }
    return "there is no key \"" + std::string(name) + "\"; there are" + keyNames();
}

std::optional<RingShape> ringShape(std::string_view text)
{
    const auto one = text.find(',');
    const auto two = text.find(',', one == std::string_view::npos ? one : one + 1);
    if (two == std::string_view::npos) return std::nullopt;
    const auto capacity = decimal(text.substr(0, one));
    const auto first = decimal(text.substr(one + 1, two - one - 1));
    const auto next = decimal(text.substr(two + 1));
    if (!capacity || !first || !next || *capacity < 1 || *capacity > 9999) return std::nullopt;
    if (*first >= *capacity || *next >= *capacity) return std::nullopt;
    return RingShape{*capacity, *first, *next};
}

} // namespace quorvelsim
