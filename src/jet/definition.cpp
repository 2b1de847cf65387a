#include "jet/definition.h"

#include "jet/text_coding.h"

#include <algorithm>

namespace quorvel::jet {

namespace {

constexpr std::uint8_t kDefinitionPageType = 0x02;
constexpr std::size_t kNextPage = 0x04;
constexpr std::size_t kLength = 0x08;
constexpr std::size_t kContinuationStart = 8;
constexpr std::size_t kMaxColumns = 255;
constexpr std::size_t kMaxPhysical = 32;
constexpr std::size_t kMaxLogical = 1000;
constexpr std::size_t kMaxNameBytes = 128;

// Constants that stand in every definition of a Jet 4 file.
constexpr std::uint32_t kDefinitionMark = 0x659;
constexpr std::uint32_t kPhysicalMark = 0x783;
constexpr std::size_t kIndexColumns = 10;

// The list of memo and OLE columns ends with the mark.
constexpr std::size_t kLongValueBytes = 10;
constexpr std::size_t kEndBytes = 2;
constexpr std::uint16_t kEndMark = 0xFFFF;

Failure damagedDefinition(const std::string& what)
{
    return Failure{"is damaged: the definition of a table " + what +
                   ". Use \"Compact and Repair\" in Access, or an earlier copy."};
}

Column parseColumn(Bytes block, const Layout& layout)
{
    Column column;
    column.type = get8(block, 0);
    column.number = get16(block, layout.columnNumber);
    column.variableIndex = get16(block, layout.columnVariableIndex);
    column.ordinal = get16(block, layout.columnOrdinal);
    column.precision = get8(block, layout.columnPrecision);
    column.scale = get8(block, layout.columnPrecision + 1);
    column.flags = get8(block, layout.columnFlags);
    column.fixedOffset = get16(block, layout.columnFixedOffset);
    column.length = get16(block, layout.columnLength);
    return column;
}

bool numbersAreSound(const Definition& definition)
{
    std::vector<bool> seen(definition.maxColumns);
    for (const auto& column : definition.columns) {
        if (column.number >= definition.maxColumns || seen[column.number]) return false;
        seen[column.number] = true;
    }
    return true;
}

/// Reads one name; `at` moves behind it. @return nothing when it does not fit.
std::optional<std::string> takeName(Bytes bytes, std::size_t& at, const Layout& layout,
                                    std::uint16_t codePage)
{
    const bool wide = layout.nameLengthSize == 2;
    const std::size_t length = wide ? get16(bytes, at) : get8(bytes, at);
    at += layout.nameLengthSize;
    if (length > kMaxNameBytes || (wide && length % 2 != 0) || at + length > bytes.size())
        return std::nullopt;
    const auto stored = part(bytes, at, length);
    at += length;
    return wide ? decodeText(stored) : decodeAnsi(stored, codePage);
}

/// Walks over what follows the column names, to the mark at the end.
bool endsWell(Bytes bytes, std::size_t at, const Definition& definition, const Layout& layout)
{
    at += definition.physicalCount * layout.physicalSize + definition.logicalCount * layout.logicalSize;
    for (std::uint32_t i = 0; i < definition.logicalCount; ++i) {
        if (!takeName(bytes, at, layout, 0)) return false;
    }
    while (at + kEndBytes <= bytes.size() && get16(bytes, at) != kEndMark)
        at += kLongValueBytes;
    return at + kEndBytes <= bytes.size();
}

void appendName(ByteVector& bytes, const std::string& name)
{
    const auto stored = encodeText(name).value_or(ByteVector{});
    append16(bytes, static_cast<std::uint16_t>(stored.size()));
    appendBytes(bytes, stored);
}

void appendColumn(ByteVector& bytes, const Column& column)
{
    append8(bytes, column.type);
    append32(bytes, kDefinitionMark);
    append16(bytes, column.number);
    append16(bytes, column.variableIndex);
    append16(bytes, column.ordinal);
    append32(bytes, kGeneralSortOrder);
    append8(bytes, column.flags);
    append8(bytes, 0);
    append32(bytes, 0);
    append16(bytes, column.fixedOffset);
    append16(bytes, column.length);
}

void appendPhysical(ByteVector& bytes, const PhysicalIndex& index)
{
    append32(bytes, kPhysicalMark);
    for (std::size_t i = 0; i < kIndexColumns; ++i) {
        const bool used = i < index.columns.size();
        append16(bytes, used ? index.columns[i] : 0xFFFF);
        append8(bytes, used ? 1 : 0);
    }
    append32(bytes, index.map);
    append32(bytes, index.root);
    append32(bytes, 0);
    append16(bytes, index.flags);
    append32(bytes, 0);
}

void appendLogical(ByteVector& bytes, const LogicalIndex& index)
{
    append32(bytes, kDefinitionMark);
    append32(bytes, index.number);
    append32(bytes, index.physical);
    append8(bytes, 0);
    append32(bytes, 0xFFFFFFFF);
    append32(bytes, 0);
    append8(bytes, 4);
    append8(bytes, 4);
    append8(bytes, index.kind);
    append32(bytes, 0);
}

ByteVector fixedPart(const Definition& definition)
{
    ByteVector bytes(kJet4.blocks);
    put16(bytes, 0, 0x0102);
    put32(bytes, 0x0C, kDefinitionMark);
    put32(bytes, kJet4.rowCount, definition.rowCount);
    put32(bytes, 0x18, 1);
    put8(bytes, kJet4.kind, definition.kind);
    put16(bytes, kJet4.maxColumns, definition.maxColumns);
    put16(bytes, kJet4.variableColumns, definition.variableColumns);
    put16(bytes, kJet4.columnCount, static_cast<std::uint16_t>(definition.columns.size()));
    put32(bytes, kJet4.logicalCount, static_cast<std::uint32_t>(definition.logical.size()));
    put32(bytes, kJet4.physicalCount, static_cast<std::uint32_t>(definition.physical.size()));
    put32(bytes, kJet4.ownedMap, definition.ownedMap);
    put32(bytes, kJet4.freeMap, definition.freeMap);
    return bytes;
}

} // namespace

std::size_t valueSize(std::uint8_t type)
{
    switch (static_cast<FieldType>(type)) {
    case FieldType::Byte:
        return 1;
    case FieldType::Integer:
        return 2;
    case FieldType::Long:
    case FieldType::Single:
        return 4;
    case FieldType::Currency:
    case FieldType::Double:
    case FieldType::Date:
        return 8;
    case FieldType::Guid:
        return 16;
    case FieldType::Numeric:
        return 17;
    default:
        return 0;
    }
}

FieldType fieldType(const Column& column)
{
    const bool known = (column.type >= 1 && column.type <= 12) || column.type == 15 || column.type == 16;
    return known ? static_cast<FieldType>(column.type) : FieldType::Internal;
}

Result<Definition> parseDefinition(Bytes bytes, const Layout& layout, std::uint16_t codePage)
{
    if (bytes.size() < layout.blocks) return damagedDefinition("is too short");
    Definition definition;
    definition.rowCount = get32(bytes, layout.rowCount);
    definition.kind = get8(bytes, layout.kind);
    definition.maxColumns = get16(bytes, layout.maxColumns);
    definition.variableColumns = get16(bytes, layout.variableColumns);
    definition.logicalCount = get32(bytes, layout.logicalCount);
    definition.physicalCount = get32(bytes, layout.physicalCount);
    definition.ownedMap = get32(bytes, layout.ownedMap);
    definition.freeMap = get32(bytes, layout.freeMap);
    const std::size_t count = get16(bytes, layout.columnCount);
    if (count > kMaxColumns || definition.physicalCount > kMaxPhysical ||
        definition.logicalCount > kMaxLogical) {
        return damagedDefinition("claims more columns or indexes than a table can have");
    }
    const std::size_t columns = layout.blocks + definition.physicalCount * layout.indexRowCountSize;
    std::size_t at = columns + count * layout.columnSize;
    if (at > bytes.size()) return damagedDefinition("ends before its columns do");
    for (std::size_t i = 0; i < count; ++i) {
        auto column = parseColumn(part(bytes, columns + i * layout.columnSize, layout.columnSize), layout);
        auto name = takeName(bytes, at, layout, codePage);
        if (!name) return damagedDefinition("holds a column name that does not fit");
        column.name = std::move(*name);
        definition.columns.push_back(std::move(column));
    }
    if (!numbersAreSound(definition)) return damagedDefinition("numbers its columns wrongly");
    if (!endsWell(bytes, at, definition, layout)) return damagedDefinition("does not come to its end");
    return definition;
}

Result<Definition> readDefinition(Pager& pager, std::uint32_t page, std::uint16_t codePage)
{
    ByteVector bytes;
    std::vector<std::uint32_t> seen;
    for (std::uint32_t next = page; next != 0;) {
        if (std::find(seen.begin(), seen.end(), next) != seen.end())
            return damagedDefinition("runs in a circle");
        seen.push_back(next);
        const auto read = pager.read(next);
        if (!read) return read.failure();
        if (get8(*read, 0) != kDefinitionPageType) return damagedDefinition("is not where it should be");
        appendBytes(bytes, read->subspan(bytes.empty() ? 0 : kContinuationStart));
        next = get32(*read, kNextPage);
        if (seen.size() > 256) return damagedDefinition("is longer than any can be");
    }
    // The bytes behind the length are left-overs, but a length that asks for more than there is, is wrong.
    const std::size_t length = get32(bytes, kLength);
    if (length > bytes.size()) return damagedDefinition("is shorter than it says");
    auto definition = parseDefinition(Bytes(bytes).first(length), pager.layout(), codePage);
    if (definition) definition->pages = seen.size();
    return definition;
}

ByteVector encodeDefinition(const Definition& definition)
{
    ByteVector bytes = fixedPart(definition);
    for (const auto& index : definition.physical) {
        append32(bytes, 0);
        append32(bytes, index.distinctKeys);
        append32(bytes, 0);
    }
    for (const auto& column : definition.columns)
        appendColumn(bytes, column);
    for (const auto& column : definition.columns)
        appendName(bytes, column.name);
    for (const auto& index : definition.physical)
        appendPhysical(bytes, index);
    for (const auto& index : definition.logical)
        appendLogical(bytes, index);
    for (const auto& index : definition.logical)
        appendName(bytes, index.name);
    for (const auto& maps : definition.longValues) {
        append16(bytes, maps.column);
        append32(bytes, maps.owned);
        append32(bytes, maps.free);
    }
    append16(bytes, kEndMark);
    put32(bytes, kLength, static_cast<std::uint32_t>(bytes.size()));
    return bytes;
}

std::optional<Page> definitionPage(const Definition& definition)
{
    const auto bytes = encodeDefinition(definition);
    if (bytes.size() + kContinuationStart > kPageSize) return std::nullopt;
    Page page{};
    putBytes(page, 0, bytes);
    put16(page, 2, static_cast<std::uint16_t>(kPageSize - bytes.size() - kContinuationStart));
    return page;
}

} // namespace quorvel::jet
