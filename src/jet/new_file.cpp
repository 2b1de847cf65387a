#include "jet/new_file.h"

#include "jet/data_page.h"
#include "jet/index_leaf.h"
#include "jet/row.h"
#include "jet/system_tables.h"
#include "jet/text_coding.h"
#include "jet/usage_map.h"

#include <algorithm>

namespace quorvel::jet {

namespace {

constexpr std::uint32_t kEmptyFilePages = 16;
constexpr std::uint32_t kGlobalMapPage = 1;
constexpr std::uint32_t kParentNameLeaf = 7;
constexpr std::uint32_t kIdLeaf = 8;
constexpr std::uint32_t kRightsLeaf = 9;
constexpr std::uint32_t kObjectsPage = 14;
constexpr std::uint32_t kRightsPage = 15;
constexpr std::size_t kInlineMapBytes = 64;

constexpr std::uint32_t kTablesContainer = 0x0F000001;
constexpr std::uint32_t kDatabasesContainer = 0x0F000002;
constexpr std::uint32_t kRelationshipsContainer = 0x0F000003;
constexpr std::uint32_t kRoot = 0x0F000000;
constexpr std::uint32_t kDatabaseObject = 0x10000000;
constexpr std::uint32_t kSystemFlags = 0x80000000;
constexpr std::uint32_t kAllRights = 0x000FFEFF;
constexpr std::uint16_t kTableObject = 1;

constexpr std::size_t kMaxName = 64;

// Which page a system map lists; the other maps of page 6 are empty.
struct MapBit {
    int slot;
    std::uint32_t page;
};
constexpr MapBit kSystemMapBits[] = {{0, 14}, {1, 14},  {16, 7},  {17, 8},  {18, 15}, {19, 15},
                                     {20, 9}, {25, 10}, {28, 11}, {29, 12}, {30, 13}};

ByteVector inlineMap(bool allSet)
{
    UsageMap map;
    map.bits.assign(kInlineMapBytes, allSet ? 0xFF : 0);
    return encodeMap(map);
}

Failure named(std::string_view kind, std::string_view name, std::string_view fault)
{
    return Failure{"cannot take the " + std::string(kind) + " \"" + std::string(name) +
                   "\": " + std::string(fault) + ". Choose another."};
}

bool isTableNameCharacter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == ' ' || character == '-' || character == '_';
}

bool isFieldNameCharacter(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte != 0x7F &&
           std::string_view(".![]\"`").find(character) == std::string_view::npos;
}

/// "" when the name is good.
std::string_view faultOf(std::string_view name, bool (*allowed)(char))
{
    const auto stored = encodeText(name);
    if (!stored) return "the name is not valid text";
    if (name.empty() || stored->size() / 2 > kMaxName) return "names have 1 to 64 characters";
    if (name.front() == ' ' || name.back() == ' ') return "names do not begin or end with a blank";
    if (!std::all_of(name.begin(), name.end(), allowed))
        return "the name holds a character that is not allowed";
    return {};
}

bool isWrittenType(FieldType type)
{
    constexpr FieldType kWritten[] = {FieldType::Integer, FieldType::Long, FieldType::Single,
                                      FieldType::Double, FieldType::Date};
    return std::find(std::begin(kWritten), std::end(kWritten), type) != std::end(kWritten);
}

Definition userDefinition(const TableDef& table, std::uint32_t mapPage)
{
    Definition definition;
    definition.maxColumns = static_cast<std::uint16_t>(table.Fields().size());
    definition.ownedMap = rowPointer(mapPage, 0);
    definition.freeMap = rowPointer(mapPage, 1);
    std::uint16_t number = 0;
    std::size_t offset = 0;
    for (const auto& field : table.Fields()) {
        const auto type = static_cast<std::uint8_t>(field.type);
        definition.columns.push_back({.name = field.name,
                                      .type = type,
                                      .number = number,
                                      .ordinal = number,
                                      .flags = kFixedColumn | kUpdatableColumn,
                                      .fixedOffset = static_cast<std::uint16_t>(offset),
                                      .length = static_cast<std::uint16_t>(valueSize(type))});
        offset += valueSize(type);
        ++number;
    }
    return definition;
}

} // namespace

NewFile::NewFile(Date stamp) : stamp_(stamp), ids_(securityIds(stamp)), pages_(kEmptyFilePages)
{
    pages_[0] = newHeader(stamp);
    layMaps();
    for (const std::uint32_t leaf : {10U, 11U, 12U, 13U}) {
        pages_[leaf] = *buildLeaf(leaf == 10 ? kQueriesTable : kRelationshipsTable, {});
    }
    listObjects();
    listRights();
    refreshSystemPages();
}

void NewFile::layMaps()
{
    pages_[kGlobalMapPage] = newDataPage(1);
    addRow(pages_[kGlobalMapPage], inlineMap(true));
    addRow(pages_[kGlobalMapPage], inlineMap(false));
    for (std::uint32_t page = 0; page < kEmptyFilePages; ++page)
        setMapBit(kGlobalMapPage, 0, page, false);
    pages_[kSystemMapPage] = newDataPage(0);
    for (int i = 0; i < kSystemMaps; ++i)
        addRow(pages_[kSystemMapPage], inlineMap(false));
    for (const auto& bit : kSystemMapBits)
        setMapBit(kSystemMapPage, bit.slot, bit.page, true);
}

void NewFile::listObjects()
{
    pages_[kObjectsPage] = newDataPage(kObjectsTable);
    const auto& engine = ids_.engine;
    const ObjectRow objects[] = {
        {kTablesContainer, kRoot, "Tables", 3, engine, kSystemFlags},
        {kDatabasesContainer, kRoot, "Databases", 3, engine, kSystemFlags},
        {kRelationshipsContainer, kRoot, "Relationships", 3, engine, kSystemFlags},
        {kDatabaseObject, kDatabasesContainer, "MSysDb", 2, ids_.admin, kSystemFlags},
        {kObjectsTable, kTablesContainer, "MSysObjects", kTableObject, engine, kSystemFlags},
        {kRightsTable, kTablesContainer, "MSysACEs", kTableObject, engine, kSystemFlags},
        {kQueriesTable, kTablesContainer, "MSysQueries", kTableObject, engine, kSystemFlags},
        {kRelationshipsTable, kTablesContainer, "MSysRelationships", kTableObject, engine, kSystemFlags},
    };
    for (const auto& row : objects)
        addObject(row);
}

void NewFile::listRights()
{
    pages_[kRightsPage] = newDataPage(kRightsTable);
    const auto& [admin, users, engine, creator] = ids_;
    const RightRow rights[] = {
        {kObjectsTable, admin, 0x00060000, false},
        {kRightsTable, admin, 0x00060000, false},
        {kQueriesTable, admin, 0x00060000, false},
        {kRelationshipsTable, admin, 0x000E0000, false},
        {kTablesContainer, creator, 0x000F00FE, true},
        {kTablesContainer, admin, 0x00060001, false},
        {kRelationshipsContainer, creator, 0x000F00FE, true},
        {kRelationshipsContainer, admin, 0x00060001, false},
        {kDatabasesContainer, admin, 0x00060000, false},
        {kDatabaseObject, admin, 0x0006000E, false},
        {kDatabaseObject, users, 0x0000000E, false},
        {kQueriesTable, users, 0x00000014, false},
        {kRelationshipsTable, users, 0x00000014, false},
        {kObjectsTable, users, 0x00000014, false},
        {kTablesContainer, users, 0x000FFEFF, true},
        {kRelationshipsContainer, users, 0x000FFFFF, true},
    };
    for (const auto& row : rights)
        addRight(row);
}

Status NewFile::append(const TableDef& table)
{
    if (auto named = checkNames(table); !named) return named;
    const auto definitionAt = static_cast<std::uint32_t>(pages_.size());
    const std::uint32_t mapsAt = definitionAt + 1;
    const auto definition = definitionPage(userDefinition(table, mapsAt));
    if (!definition) return named("table", table.Name(), "it has more columns than this program writes");
    NewFile grown = *this;
    grown.pages_.push_back(*definition);
    grown.addMaps();
    grown.setMapBit(kGlobalMapPage, 0, definitionAt, false);
    grown.setMapBit(kGlobalMapPage, 0, mapsAt, false);
    const bool added =
        grown.addObject({definitionAt, kTablesContainer, table.Name(), kTableObject, ids_.admin, 0}) &&
        grown.addRight({definitionAt, ids_.admin, kAllRights, false}) &&
        grown.addRight({definitionAt, ids_.users, kAllRights, false}) && grown.refreshSystemPages();
    if (!added)
        return named("table", table.Name(), "the file already has as many tables as this program writes");
    *this = std::move(grown);
    return {};
}

Status NewFile::checkNames(const TableDef& table) const
{
    const auto taken = [](const auto& names, std::string_view name) {
        return std::any_of(names.begin(), names.end(),
                           [name](const std::string& other) { return sameName(other, name); });
    };
    if (const auto fault = faultOf(table.Name(), isTableNameCharacter); !fault.empty()) {
        return named("table", table.Name(), fault);
    }
    if (taken(names_, table.Name())) return named("table", table.Name(), "there is one of that name already");
    if (table.Fields().empty()) return named("table", table.Name(), "it has no columns");
    std::vector<std::string> columns;
    for (const auto& field : table.Fields()) {
        if (const auto fault = faultOf(field.name, isFieldNameCharacter); !fault.empty()) {
            return named("column", field.name, fault);
        }
        if (taken(columns, field.name))
            return named("column", field.name, "there is one of that name already");
        if (!isWrittenType(field.type)) {
            return named("column", field.name,
                         "columns of type " + std::string(typeName(field.type)) + " are not written");
        }
        columns.push_back(field.name);
    }
    return {};
}

bool NewFile::addObject(const ObjectRow& row)
{
    ByteVector fixed;
    append32(fixed, row.id);
    append32(fixed, row.parent);
    append16(fixed, row.type);
    append64(fixed, std::bit_cast<std::uint64_t>(stamp_.serial));
    append64(fixed, std::bit_cast<std::uint64_t>(stamp_.serial));
    append32(fixed, row.flags);
    std::vector<ByteVector> variable(11);
    variable[0] = encodeText(row.name).value_or(ByteVector{});
    variable[1].assign(row.owner.begin(), row.owner.end());
    std::vector<bool> present(17);
    std::fill_n(present.begin(), 8, true); // Id, ParentId, Name, Type, both dates, Owner, Flags
    const auto slot = addRow(pages_[kObjectsPage], encodeCatalogRow(fixed, variable, present));
    ByteVector parentName;
    appendLongKey(parentName, row.parent);
    if (!slot || !appendTextKey(parentName, row.name)) return false;
    ByteVector id;
    appendLongKey(id, row.id);
    parentNameKeys_.push_back(indexEntry(parentName, kObjectsPage, *slot));
    idKeys_.push_back(indexEntry(id, kObjectsPage, *slot));
    if (row.type == kTableObject) names_.emplace_back(row.name);
    return true;
}

bool NewFile::addRight(const RightRow& row)
{
    ByteVector fixed;
    append32(fixed, row.object);
    append32(fixed, row.mask);
    const auto bytes = encodeCatalogRow(fixed, {ByteVector(row.who.begin(), row.who.end())},
                                        {true, true, true, row.inheritable});
    const auto slot = addRow(pages_[kRightsPage], bytes);
    if (!slot) return false;
    ByteVector key;
    appendLongKey(key, row.object);
    rightKeys_.push_back(indexEntry(key, kRightsPage, *slot));
    return true;
}

void NewFile::addMaps()
{
    Page page = newDataPage(0);
    addRow(page, inlineMap(false));
    addRow(page, inlineMap(false));
    pages_.push_back(page);
}

void NewFile::setMapBit(std::uint32_t mapPage, int slot, std::uint32_t page, bool on)
{
    auto& byte = pages_[mapPage][rowOffset(pages_[mapPage], slot) + 5 + page / 8];
    const auto bit = static_cast<std::uint8_t>(1U << (page % 8));
    byte = static_cast<std::uint8_t>(on ? byte | bit : byte & ~bit);
}

bool NewFile::refreshSystemPages()
{
    const auto parentNames = buildLeaf(kObjectsTable, parentNameKeys_);
    const auto ids = buildLeaf(kObjectsTable, idKeys_);
    const auto rights = buildLeaf(kRightsTable, rightKeys_);
    if (!parentNames || !ids || !rights) return false;
    pages_[kParentNameLeaf] = *parentNames;
    pages_[kIdLeaf] = *ids;
    pages_[kRightsLeaf] = *rights;
    for (std::uint32_t table = kObjectsTable; table <= kRelationshipsTable; ++table) {
        Definition definition = systemDefinition(table);
        if (table == kObjectsTable) {
            definition.rowCount = static_cast<std::uint32_t>(idKeys_.size());
            for (auto& index : definition.physical)
                index.distinctKeys = definition.rowCount;
        } else if (table == kRightsTable) {
            definition.rowCount = static_cast<std::uint32_t>(rightKeys_.size());
            // One key per object: two rights come with each object but the containers' first sixteen.
            definition.physical[0].distinctKeys = 8 + (definition.rowCount - 16) / 2;
        }
        pages_[table] = *definitionPage(definition);
    }
    return true;
}

} // namespace quorvel::jet
