#pragma once

#include "sim/calibration.h"
#include "sim/civil.h"
#include "sim/readout_type.h"
#include "sim/ring.h"
#include "sim/wire.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvelsim {

enum class Switch { Swap, InvertX, InvertY, InvertZ };

/// How a readout takes readings on its own.
struct AutoReading {
    static constexpr int kInterval = 1;
    static constexpr int kFixedTimes = 2;

    int mode = kInterval;
    std::array<int, 4> values{1, 0, 0,
                              0}; ///< hours, minutes, seconds of the interval; or four hours of the day

    /// Seconds of the interval; 0 in any other mode.
    [[nodiscard]] CivilSeconds interval() const;

    /// When the reading after `time` is taken; nothing when there is none.
    [[nodiscard]] std::optional<CivilSeconds> after(CivilSeconds time) const;
};

/// Dust on the glass before a sensor, put there by hand.
struct DustSpot {
    Sensor sensor = Sensor::X;
    double place = 0; ///< mm along the sensor
    double depth = 0; ///< of the light, 0 to 1, that its middle takes
    double width = 0; ///< mm, where half of that is taken
};

/// Everything one readout knows. The commands (commands.h) are the only way a client changes it; the control
/// channel may set it directly. Times `now` are seconds since the start of the bus.
class Readout {
public:
    using Values = std::array<double, 4>; ///< X, Y, Z1, Z2 in mm

    Readout(int readoutAddress, const ReadoutType& readoutType, std::uint64_t seed,
            CivilSeconds clockAtStart);

    /// Where the sensors see the wire: the model's place, or where it was put by hand.
    [[nodiscard]] Values places(double now) const;

    /// What the readout answers: places corrected by calibration, X and Y swapped, directions inverted (the
    /// sign changes), offsets added. 0 for a sensor that it does not have.
    [[nodiscard]] Values readings(double now) const;

    /// Takes the automatic readings that have come due by `now`.
    void catchUp(double now);

    /// Starts automatic readings anew from the clock's present time: after a new interval or a new clock.
    void restartAutoReading(double now);

    /// Stores one reading at the clock's present time.
    void takeRecord(double now);

    /// Replaces the ring and fills it with a plausible past up to `now`. A ring that has wrapped has all its
    /// slots written; one that has not, only those from first on.
    void fillRing(int capacity, int first, int next, double now);

    /// What a slot holds, as the bus shows it: date, X, Y, and with Z sensors Z1, Z2. Zeros for a slot that
    /// was never written; where only noise is left of a field, always the same noise.
    [[nodiscard]] std::vector<std::string> recordFields(int slot) const;

    /// The clock is off by so many seconds, and has been all along: stored readings carry its time.
    void putClockOff(CivilSeconds by, double now);

    [[nodiscard]] double offset(Axis axis) const;
    [[nodiscard]] bool isOn(Switch which) const { return switches[static_cast<std::size_t>(which)]; }

    int address;
    const ReadoutType* type;
    std::array<std::string, 3> offsets{"+0.00000", "+0.00000", "+0.00000"}; ///< X, Y, Z; 8 characters each
    bool reference = false;
    std::array<bool, 4> switches{}; ///< in the order of Switch
    int diameterTenthsMm = 15;
    int errorTenthsMm = 3;
    bool selfCalibration = true;
    ReadoutClock clock;
    AutoReading autoReading;
    Ring ring;
    std::string stitching = "3665"; ///< 4 characters: where the second half of the Y sensor begins
    std::array<CalibrationTable, 4> calibration; ///< X, Y, Z1, Z2
    std::array<std::optional<double>, 4> pinned; ///< places that were set by hand, mm
    int readingLength = 29;                      ///< 29 or 27 characters in an answer to a reading
    std::map<std::string, std::string, std::less<>> fixedReplies; ///< by command digits, set by a test
    std::vector<DustSpot> dust;
    bool ownDust = true; ///< the specks that every sensor has from its seed; gone when it was cleaned
    Wire wire;

private:
    std::optional<CivilSeconds> nextRecord_;
};

} // namespace quorvelsim
