#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Calendar time as a readout counts it: whole seconds since 1970-01-01 00:00:00 on its own wall, no zone.
namespace quorvelsim {

using CivilSeconds = std::int64_t;

inline constexpr CivilSeconds kMinute = 60;
inline constexpr CivilSeconds kHour = 60 * kMinute;
inline constexpr CivilSeconds kDay = 24 * kHour;

struct CivilParts {
    int year, month, day, hour, minute, second;
};

CivilParts partsOf(CivilSeconds time);

/// Nothing when there is no such day or time of day, or the year is not 2000..2099.
std::optional<CivilSeconds> civilOf(const CivilParts& parts);

/// "YYMMDDHHMMSS", the form of the bus; the century is 20.
std::string busTime(CivilSeconds time);
std::optional<CivilSeconds> fromBusTime(std::string_view text);

/// "YYYY-MM-DDTHH:MM:SS", for people and tests.
std::string isoTime(CivilSeconds time);
std::optional<CivilSeconds> fromIsoTime(std::string_view text);

/// The PC's date and time now.
CivilSeconds pcTime();

/// A readout's running clock. `now` is seconds since the start of the bus.
class ReadoutClock {
public:
    explicit ReadoutClock(CivilSeconds atStart) : atStart_(static_cast<double>(atStart)) {}

    [[nodiscard]] CivilSeconds at(double now) const;
    void shift(CivilSeconds by) { atStart_ += static_cast<double>(by); }
    void set(CivilSeconds time, double now) { atStart_ = static_cast<double>(time) - now; }

private:
    double atStart_;
};

} // namespace quorvelsim
