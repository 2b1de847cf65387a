#include "protocol/direction.h"

#include <cstddef>

namespace quorvel::protocol {

namespace {

constexpr std::string_view kDirectionNames[] = {"X", "Y", "Z"};
constexpr std::string_view kSensorNames[] = {"X", "Y", "Z1", "Z2"};

} // namespace

std::string_view nameOf(Direction direction) { return kDirectionNames[static_cast<std::size_t>(direction)]; }

std::string_view nameOf(Sensor sensor) { return kSensorNames[static_cast<std::size_t>(sensor)]; }

bool hasDirection(link::InstrumentType type, Direction direction)
{
    if (direction == Direction::Y) return type != link::TypeD;
    return direction == Direction::X || type == link::TypeC;
}

} // namespace quorvel::protocol
