#pragma once

#include <cstddef>
#include <cstdint>

/// Where things stand in the pages of the two file versions. Offsets in bytes.
namespace quorvel::jet {

struct Layout {
    int version;           ///< 3 or 4
    std::size_t pageSize;  ///< 2048 or 4096
    std::size_t slotCount; ///< data page: number of slots
    std::size_t slotTable; ///< data page: first slot
    std::size_t countSize; ///< bytes of a row's column count and of each of its variable offsets: 1 or 2

    // Table definition, from the beginning of its first page.
    std::size_t rowCount;
    std::size_t kind;
    std::size_t maxColumns;
    std::size_t variableColumns;
    std::size_t columnCount;
    std::size_t logicalCount;
    std::size_t physicalCount;
    std::size_t ownedMap;
    std::size_t freeMap;
    std::size_t blocks; ///< where the counted blocks begin

    // Sizes of the counted blocks.
    std::size_t indexRowCountSize;
    std::size_t columnSize;
    std::size_t physicalSize;
    std::size_t logicalSize;
    std::size_t nameLengthSize;

    // Column descriptor.
    std::size_t columnNumber;
    std::size_t columnVariableIndex;
    std::size_t columnOrdinal;
    std::size_t columnPrecision; ///< of Numeric: precision, then scale
    std::size_t columnFlags;
    std::size_t columnFixedOffset;
    std::size_t columnLength;

    /// Pages that one bitmap page of a usage map tells about.
    std::uint32_t pagesPerBitmap() const { return static_cast<std::uint32_t>((pageSize - 4) * 8); }
};

/// Pages of 4096 bytes that make 2 GB, the most an Access database can hold: no page has this number or a higher one.
inline constexpr std::uint32_t kMostPages = 524287;

/// How a new file sorts texts: the general sort order, by its language number.
inline constexpr std::uint32_t kGeneralSortOrder = 0x0409;

inline constexpr Layout kJet4 = {
    .version = 4,
    .pageSize = 4096,
    .slotCount = 0x0C,
    .slotTable = 0x0E,
    .countSize = 2,
    .rowCount = 0x10,
    .kind = 0x28,
    .maxColumns = 0x29,
    .variableColumns = 0x2B,
    .columnCount = 0x2D,
    .logicalCount = 0x2F,
    .physicalCount = 0x33,
    .ownedMap = 0x37,
    .freeMap = 0x3B,
    .blocks = 0x3F,
    .indexRowCountSize = 12,
    .columnSize = 25,
    .physicalSize = 52,
    .logicalSize = 28,
    .nameLengthSize = 2,
    .columnNumber = 0x05,
    .columnVariableIndex = 0x07,
    .columnOrdinal = 0x09,
    .columnPrecision = 0x0B,
    .columnFlags = 0x0F,
    .columnFixedOffset = 0x15,
    .columnLength = 0x17,
};

inline constexpr Layout kJet3 = {
    .version = 3,
    .pageSize = 2048,
    .slotCount = 0x08,
    .slotTable = 0x0A,
    .countSize = 1,
    .rowCount = 0x0C,
    .kind = 0x14,
    .maxColumns = 0x15,
    .variableColumns = 0x17,
    .columnCount = 0x19,
    .logicalCount = 0x1B,
    .physicalCount = 0x1F,
    .ownedMap = 0x23,
    .freeMap = 0x27,
    .blocks = 0x2B,
    .indexRowCountSize = 8,
    .columnSize = 18,
    .physicalSize = 39,
    .logicalSize = 20,
    .nameLengthSize = 1,
    .columnNumber = 0x01,
    .columnVariableIndex = 0x03,
    .columnOrdinal = 0x05,
    .columnPrecision = 0x0B,
    .columnFlags = 0x0D,
    .columnFixedOffset = 0x0E,
    .columnLength = 0x10,
};

} // namespace quorvel::jet
