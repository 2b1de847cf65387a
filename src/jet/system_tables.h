#pragma once

#include "jet/definition.h"

#include <cstdint>

/// The four tables that every database file keeps about itself, as the engine defines them.
namespace quorvel::jet {

inline constexpr std::uint32_t kObjectsTable = 2; ///< definition pages
inline constexpr std::uint32_t kRightsTable = 3;
inline constexpr std::uint32_t kQueriesTable = 4;
inline constexpr std::uint32_t kRelationshipsTable = 5;

/// The page that holds all usage maps of the four tables, and how many those are.
inline constexpr std::uint32_t kSystemMapPage = 6;
inline constexpr int kSystemMaps = 31;

/// The definition of one of the four, with row count and key counts 0.
Definition systemDefinition(std::uint32_t page);

} // namespace quorvel::jet
