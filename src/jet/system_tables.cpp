#include "jet/system_tables.h"

#include "jet/bytes.h"

#include <span>

namespace quorvel::jet {

namespace {

constexpr std::uint8_t kF = 0x13; // fixed
constexpr std::uint8_t kV = 0x12; // variable
constexpr std::uint8_t kS = 0x32; // security id

struct SystemColumn {
    const char* name;
    std::uint8_t type;
    std::uint16_t number, variableIndex;
    std::uint8_t flags;
    std::uint16_t fixedOffset, length;
};

constexpr SystemColumn kObjects[] = {
    {"Connect", 0x0C, 9, 3, kV, 0, 0},      {"Database", 0x0C, 8, 2, kV, 0, 0},
    {"DateCreate", 0x08, 4, 1, kF, 10, 8},  {"DateUpdate", 0x08, 5, 1, kF, 18, 8},
    {"Flags", 0x04, 7, 2, kF, 26, 4},       {"ForeignName", 0x0A, 10, 4, kV, 0, 510},
    {"Id", 0x04, 0, 0, kF, 0, 4},           {"Lv", 0x0B, 13, 7, kV, 0, 0},
    {"LvExtra", 0x0B, 16, 10, kV, 0, 0},    {"LvModule", 0x0B, 15, 9, kV, 0, 0},
    {"LvProp", 0x0B, 14, 8, kV, 0, 0},      {"Name", 0x0A, 2, 0, kV, 0, 510},
    {"Owner", 0x09, 6, 1, kS, 0, 510},      {"ParentId", 0x04, 1, 0, kF, 4, 4},
    {"RmtInfoLong", 0x0B, 12, 6, kV, 0, 0}, {"RmtInfoShort", 0x09, 11, 5, kV, 0, 510},
    {"Type", 0x03, 3, 1, kF, 8, 2},
};

constexpr SystemColumn kRights[] = {
    {"ACM", 0x04, 2, 1, kF, 4, 4},
    {"FInheritable", 0x01, 3, 1, kF, 0, 1},
    {"ObjectId", 0x04, 0, 0, kF, 0, 4},
    {"SID", 0x09, 1, 0, kS, 0, 510},
};

constexpr SystemColumn kQueries[] = {
    {"Attribute", 0x02, 1, 0, kF, 4, 1}, {"Expression", 0x0C, 5, 3, kV, 0, 0},
    {"Flag", 0x03, 6, 4, kF, 5, 2},      {"LvExtra", 0x04, 7, 4, kF, 7, 4},
    {"Name1", 0x0A, 3, 1, kV, 0, 510},   {"Name2", 0x0A, 4, 2, kV, 0, 510},
    {"ObjectId", 0x04, 0, 0, kF, 0, 4},  {"Order", 0x09, 2, 0, kV, 0, 510},
};

constexpr SystemColumn kRelationships[] = {
    {"ccolumn", 0x04, 2, 1, kF, 4, 4},
    {"grbit", 0x04, 1, 1, kF, 0, 4},
    {"icolumn", 0x04, 3, 1, kF, 8, 4},
    {"szColumn", 0x0A, 5, 2, kV, 0, 510},
    {"szObject", 0x0A, 4, 1, kV, 0, 510},
    {"szReferencedColumn", 0x0A, 7, 4, kV, 0, 510},
    {"szReferencedObject", 0x0A, 6, 3, kV, 0, 510},
    {"szRelationship", 0x0A, 0, 0, kV, 0, 510},
};

/// One physical index: key columns (count first), map row on kSystemMapPage, root page, flags.
struct SystemIndex {
    std::uint16_t count;
    std::uint16_t columns[3];
    int mapRow;
    std::uint32_t root;
    std::uint16_t flags;
};

constexpr SystemIndex kObjectsIndexes[] = {{2, {1, 2}, 16, 7, 0x81}, {1, {0}, 17, 8, 0x81}};
constexpr SystemIndex kRightsIndexes[] = {{1, {0}, 20, 9, 0x88}};
constexpr SystemIndex kQueriesIndexes[] = {{3, {0, 1, 2}, 25, 10, 0x81}};
constexpr SystemIndex kRelationshipsIndexes[] = {
    {1, {0}, 28, 11, 0x82}, {1, {4}, 29, 12, 0x82}, {1, {6}, 30, 13, 0x82}};

struct SystemKey {
    const char* name;
    std::uint32_t number, physical;
    std::uint8_t kind;
};

constexpr SystemKey kObjectsKeys[] = {{"Id", 1, 1, 1}, {"ParentIdName", 0, 0, 0}};
constexpr SystemKey kRightsKeys[] = {{"ObjectId", 0, 0, 0}};
constexpr SystemKey kQueriesKeys[] = {{"ObjectIdAttribute", 0, 0, 1}};
constexpr SystemKey kRelationshipsKeys[] = {
    {"szObject", 1, 1, 0}, {"szReferencedObject", 2, 2, 0}, {"szRelationship", 0, 0, 0}};

struct SystemLongValue {
    std::uint16_t column;
    int ownedRow, freeRow;
};

constexpr SystemLongValue kObjectsLongValues[] = {{9, 4, 5},    {8, 2, 3},    {13, 8, 9}, {16, 14, 15},
                                                  {15, 12, 13}, {14, 10, 11}, {12, 6, 7}};
constexpr SystemLongValue kQueriesLongValues[] = {{5, 23, 24}};

struct SystemTable {
    std::span<const SystemColumn> columns;
    std::uint16_t variableColumns;
    int ownedRow;
    std::span<const SystemIndex> indexes;
    std::span<const SystemKey> keys;
    std::span<const SystemLongValue> longValues;
};

const SystemTable kTables[] = {
    {kObjects, 11, 0, kObjectsIndexes, kObjectsKeys, kObjectsLongValues},
    {kRights, 1, 18, kRightsIndexes, kRightsKeys, {}},
    {kQueries, 4, 21, kQueriesIndexes, kQueriesKeys, kQueriesLongValues},
    {kRelationships, 5, 26, kRelationshipsIndexes, kRelationshipsKeys, {}},
};

std::uint32_t mapPointer(int row) { return rowPointer(kSystemMapPage, row); }

} // namespace

Definition systemDefinition(std::uint32_t page)
{
    const SystemTable& table = kTables[page - kObjectsTable];
    Definition definition;
    definition.kind = kSystemTable;
    definition.maxColumns = static_cast<std::uint16_t>(table.columns.size());
    definition.variableColumns = table.variableColumns;
    definition.ownedMap = mapPointer(table.ownedRow);
    definition.freeMap = mapPointer(table.ownedRow + 1);
    for (const auto& row : table.columns) {
        definition.columns.push_back({.name = row.name,
                                      .type = row.type,
                                      .number = row.number,
                                      .variableIndex = row.variableIndex,
                                      .flags = row.flags,
                                      .fixedOffset = row.fixedOffset,
                                      .length = row.length});
    }
    for (const auto& row : table.indexes) {
        definition.physical.push_back({.columns = {row.columns, row.columns + row.count},
                                       .map = mapPointer(row.mapRow),
                                       .root = row.root,
                                       .flags = row.flags});
    }
    for (const auto& row : table.keys) {
        definition.logical.push_back(
            {.name = row.name, .number = row.number, .physical = row.physical, .kind = row.kind});
    }
    for (const auto& row : table.longValues) {
        definition.longValues.push_back({row.column, mapPointer(row.ownedRow), mapPointer(row.freeRow)});
    }
    return definition;
}

} // namespace quorvel::jet
