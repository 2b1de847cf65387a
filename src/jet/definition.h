#pragma once

#include "jet/bytes.h"
#include "jet/layout.h"
#include "jet/pager.h"
#include "jet/result.h"
#include "jet/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Table definitions: the columns of a table, and where its pages are listed. A definition is a run of bytes over
/// one page or a chain of them:
///
///     fixed part | per physical index: counts | columns | their names | physical indexes | logical indexes |
///     their names | memo and OLE columns: their maps | FF FF
namespace quorvel::jet {

inline constexpr std::uint8_t kUserTable = 0x4E;
inline constexpr std::uint8_t kSystemTable = 0x53;
inline constexpr std::uint8_t kFixedColumn = 0x01;
inline constexpr std::uint8_t kUpdatableColumn = 0x02;

struct Column {
    std::string name; ///< UTF-8
    std::uint8_t type = 0;
    std::uint16_t number = 0;        ///< bit in the null mask
    std::uint16_t variableIndex = 0; ///< entry in the row's table of variable columns
    std::uint16_t ordinal = 0;
    std::uint8_t flags = 0;
    std::uint16_t fixedOffset = 0; ///< counted from behind the row's column count
    std::uint16_t length = 0;      ///< in bytes
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;

    bool fixed() const { return (flags & kFixedColumn) != 0; }
};

struct PhysicalIndex {
    std::vector<std::uint16_t> columns;
    std::uint32_t map = 0;
    std::uint32_t root = 0;
    std::uint16_t flags = 0;
    std::uint32_t distinctKeys = 0;
};

struct LogicalIndex {
    std::string name;
    std::uint32_t number = 0;
    std::uint32_t physical = 0;
    std::uint8_t kind = 0;
};

struct LongValueMaps {
    std::uint16_t column = 0;
    std::uint32_t owned = 0;
    std::uint32_t free = 0;
};

struct Definition {
    std::uint32_t rowCount = 0;
    std::uint8_t kind = kUserTable;
    std::uint16_t maxColumns = 0;
    std::uint16_t variableColumns = 0;
    std::uint32_t logicalCount = 0;
    std::uint32_t physicalCount = 0;
    std::uint32_t ownedMap = 0; ///< row pointers
    std::uint32_t freeMap = 0;
    std::vector<Column> columns;
    std::vector<PhysicalIndex> physical;   ///< written, not read
    std::vector<LogicalIndex> logical;     ///< written, not read
    std::vector<LongValueMaps> longValues; ///< written, not read
    std::size_t pages = 1;                 ///< pages that the definition takes
};

/// Bytes that a value of this type takes in a row; 0 for types without a fixed size and for yes/no.
std::size_t valueSize(std::uint8_t type);

/// The type of a column as callers see it.
FieldType fieldType(const Column& column);

/// Reads a definition from its assembled bytes: the first page whole, of the others what follows their first 8
/// bytes. Fails when a count, a length or a number does not fit.
Result<Definition> parseDefinition(Bytes bytes, const Layout& layout, std::uint16_t codePage);

/// Reads the definition that begins on a page. Fails on a page of another kind, a chain that comes back to itself,
/// and like parseDefinition().
Result<Definition> readDefinition(Pager& pager, std::uint32_t page, std::uint16_t codePage);

/// The Jet 4 bytes of a definition. Names must be valid UTF-8.
ByteVector encodeDefinition(const Definition& definition);

/// A definition as the one page it must fit on. Nothing when it is longer.
std::optional<Page> definitionPage(const Definition& definition);

} // namespace quorvel::jet
