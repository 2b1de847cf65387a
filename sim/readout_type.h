#pragma once

#include <array>
#include <string>
#include <string_view>

namespace quorvelsim {

/// The line sensors that a readout may carry. The order is that of the value fields of its answers.
enum class Sensor { X, Y, Z1, Z2 };
inline constexpr std::array<std::string_view, 4> kSensorNames{"X", "Y", "Z1", "Z2"};

/// The directions that have an offset of their own; both Z sensors share one.
enum class Axis { X, Y, Z };
inline constexpr std::array<std::string_view, 3> kAxisNames{"X", "Y", "Z"};

/// One line sensor. Pixel k (from 1) stands at (k - zeroPixel) * pitch + zero millimetres.
struct SensorModel {
    int pixels;       ///< 0: the readout has no such sensor
    double range;     ///< the wire is seen from 0 to here, mm
    double zeroPixel; ///< pixel that the position formula counts from
    double pitch;     ///< mm from pixel to pixel
    double zero;      ///< mm at zeroPixel
};

struct ReadoutType {
    char letter;
    std::array<SensorModel, 4> sensors; ///< X, Y, Z1, Z2

    [[nodiscard]] const SensorModel& sensor(Sensor which) const
    {
        return sensors[static_cast<std::size_t>(which)];
    }
    [[nodiscard]] std::string name() const { return {letter}; }
    [[nodiscard]] bool has(Sensor which) const { return sensor(which).pixels > 0; }
};

/// The type of that letter ("A" to "D", either case); null for any other text.
const ReadoutType* findReadoutType(std::string_view letter);

} // namespace quorvelsim
