#pragma once

#include "link/bench.h"

#include <optional>
#include <string_view>

/// Where a readout measures.
namespace quorvel::protocol {

enum class Direction { X, Y, Z };

/// The line sensors; the two of Z measure one direction.
enum class Sensor { X, Y, Z1, Z2 };

inline constexpr Direction kDirections[] = {Direction::X, Direction::Y, Direction::Z};

/// "X", "Y", "Z", and "X", "Y", "Z1", "Z2".
std::string_view nameOf(Direction direction);
std::string_view nameOf(Sensor sensor);

/// "A" to "D", and the type of such a letter; nothing for any other text.
std::string_view nameOf(link::InstrumentType type);
std::optional<link::InstrumentType> typeNamed(std::string_view letter);

/// Y is missing at TypeD; Z is there at TypeC alone.
bool hasDirection(link::InstrumentType type, Direction direction);

/// The same as conditions for the rows of a table: what every type has, what needs Y, what needs Z.
inline bool always(link::InstrumentType /*type*/) { return true; }
inline bool hasY(link::InstrumentType type) { return hasDirection(type, Direction::Y); }
inline bool hasZ(link::InstrumentType type) { return hasDirection(type, Direction::Z); }

} // namespace quorvel::protocol
