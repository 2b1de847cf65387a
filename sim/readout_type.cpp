#include "sim/readout_type.h"

namespace quorvelsim {

namespace {

constexpr SensorModel kNone{0, 0, 0, 0, 0};
constexpr SensorModel kFine{7450, 50, 256, 0.007, 0};
constexpr SensorModel kCoarse{3760, 50, 64, 0.014, -0.85};
constexpr SensorModel kStitched{7330, 100, 64, 0.014, -0.85};
constexpr SensorModel kShort{2048, 26, 64, 0.014, -0.85};

constexpr ReadoutType kTypes[] = {
    {'A', {kFine, kFine, kNone, kNone}},
    {'B', {kCoarse, kStitched, kNone, kNone}},
    {'C', {kCoarse, kCoarse, kShort, kShort}},
    {'D', {kCoarse, kNone, kNone, kNone}},
};

} // namespace

const ReadoutType* findReadoutType(std::string_view letter)
{
    for (const auto& type : kTypes) {
        const char lower = static_cast<char>(type.letter + ('a' - 'A'));
        if (letter.size() == 1 && (letter[0] == type.letter || letter[0] == lower)) return &type;
    }
    return nullptr;
}

} // namespace quorvelsim
