#include "protocol/direction.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace quorvel::protocol {

namespace {

constexpr std::string_view kDirectionNames[] = {"X", "Y", "Z"};
constexpr std::string_view kSensorNames[] = {"X", "Y", "Z1", "Z2"};
constexpr std::string_view kTypeNames[] = {"A", "B", "C", "D"};

} // namespace

std::string_view nameOf(Direction direction) { return kDirectionNames[static_cast<std::size_t>(direction)]; }

std::string_view nameOf(Sensor sensor) { return kSensorNames[static_cast<std::size_t>(sensor)]; }

std::string_view nameOf(link::InstrumentType type)
{
    return kTypeNames[static_cast<std::size_t>(type - link::TypeA)];
}

std::optional<link::InstrumentType> typeNamed(std::string_view letter)
{
    const auto* found = std::find(std::begin(kTypeNames), std::end(kTypeNames), letter);
    if (found == std::end(kTypeNames)) return std::nullopt;
    return static_cast<link::InstrumentType>(link::TypeA + (found - std::begin(kTypeNames)));
}

bool hasDirection(link::InstrumentType type, Direction direction)
{
    if (direction == Direction::Y) return type != link::TypeD;
    return direction == Direction::X || type == link::TypeC;
}

} // namespace quorvel::protocol
