#include "jet/row.h"

#include "jet/long_value.h"
#include "jet/text_coding.h"

#include <algorithm>

namespace quorvel::jet {

namespace {

constexpr int kMaxScale = 38;

Failure damagedRow()
{
    return Failure{
        "is damaged: a row of the table cannot be read. Use \"Compact and Repair\" in Access, or an "
        "earlier copy."};
}

/// A row taken apart, every offset checked.
struct RowParts {
    std::size_t columns = 0;
    Bytes mask;
    Bytes body;                        ///< everything before the mask
    std::vector<std::size_t> variable; ///< beginnings of the variable columns, then the end of the last

    bool present(std::uint16_t number) const
    {
        return number < columns && (get8(mask, number / 8U) >> (number % 8U) & 1) != 0;
    }
};

/// Offsets of the variable columns of a Jet 3 row: bytes, lifted by 256 for each jump passed.
std::vector<std::size_t> narrowOffsets(Bytes body, std::size_t count, std::size_t rowSize)
{
    const std::size_t end = body.size();
    const std::size_t stored = (rowSize - 1) / 256;
    if (2 + stored + count > end) return {};
    std::size_t jumps = stored;
    if ((end - 2 - stored - count) / 256 < jumps) --jumps;
    std::vector<std::size_t> offsets;
    std::size_t used = 0;
    for (std::size_t k = 0; k <= count; ++k) {
        while (used < jumps && get8(body, end - 2 - used) == k)
            ++used;
        offsets.push_back(get8(body, end - 2 - stored - k) + 256 * used);
    }
    return offsets;
}

std::vector<std::size_t> wideOffsets(Bytes body, std::size_t count)
{
    const std::size_t end = body.size();
    if (4 + 2 * count > end) return {};
    std::vector<std::size_t> offsets;
    for (std::size_t k = 0; k <= count; ++k)
        offsets.push_back(get16(body, end - 4 - 2 * k));
    return offsets;
}

Result<RowParts> takeApart(Bytes row, const Definition& definition, const Layout& layout)
{
    RowParts parts;
    if (row.size() < layout.countSize) return damagedRow();
    parts.columns = layout.countSize == 2 ? get16(row, 0) : get8(row, 0);
    const std::size_t maskBytes = (parts.columns + 7) / 8;
    // A row without columns is what a zeroed part of a page looks like.
    if (parts.columns == 0 || row.size() < layout.countSize + maskBytes) return damagedRow();
    parts.body = row.first(row.size() - maskBytes);
    parts.mask = row.last(maskBytes);
    if (definition.variableColumns == 0) return parts;
    const std::size_t end = parts.body.size();
    if (end < 2 * layout.countSize) return damagedRow();
    const bool wide = layout.countSize == 2;
    const std::size_t count = wide ? get16(parts.body, end - 2) : get8(parts.body, end - 1);
    parts.variable = wide ? wideOffsets(parts.body, count) : narrowOffsets(parts.body, count, row.size());
    if (parts.variable.empty() || !std::is_sorted(parts.variable.begin(), parts.variable.end()) ||
        parts.variable.back() > end || parts.variable.front() < layout.countSize) {
        return damagedRow();
    }
    return parts;
}

/// Sign, then 128 bits in four u32, the highest first.
Result<Value> numericOf(Bytes bytes, int scale)
{
    if (bytes.size() != 17 || scale > kMaxScale) return damagedRow();
    std::array<std::uint32_t, 4> words{};
    for (std::size_t i = 0; i < 4; ++i)
        words[i] = get32(bytes, 1 + 4 * i);
    // From the last digit to the first.
    std::string backward;
    const auto places = static_cast<std::size_t>(scale);
    const auto left = [&words] {
        return std::any_of(words.begin(), words.end(), [](auto word) { return word != 0; });
    };
    while (left() || backward.size() <= places + (places > 0 ? 1 : 0)) {
        if (places > 0 && backward.size() == places) backward += '.';
        std::uint64_t rest = 0;
        for (auto& word : words) {
            rest = rest << 32 | word;
            word = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
        backward += static_cast<char>('0' + rest);
    }
    if (bytes[0] != 0) backward += '-';
    return Value(Numeric{std::string(backward.rbegin(), backward.rend())});
}

Value guidOf(Bytes bytes)
{
    constexpr std::size_t kPrintOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    Guid guid;
    for (std::size_t i = 0; i < guid.bytes.size(); ++i)
        guid.bytes[i] = get8(bytes, kPrintOrder[i]);
    return guid;
}

/// A number, a date or a GUID: `bytes` has the size of its type.
Value plainOf(FieldType type, Bytes bytes)
{
    switch (type) {
    case FieldType::Byte:
        return get8(bytes, 0);
    case FieldType::Integer:
        return static_cast<std::int16_t>(get16(bytes, 0));
    case FieldType::Long:
        return static_cast<std::int32_t>(get32(bytes, 0));
    case FieldType::Currency:
        return Currency{static_cast<std::int64_t>(get64(bytes, 0))};
    case FieldType::Single:
        return floatOf(get32(bytes, 0));
    case FieldType::Double:
        return doubleOf(get64(bytes, 0));
    case FieldType::Date:
        return Date{doubleOf(get64(bytes, 0))};
    default:
        return guidOf(bytes);
    }
}

/// What a decoder needs beside the bytes.
struct Source {
    std::uint16_t codePage;
    Pager& pager;
    std::size_t longBytesLeft = kMostLongValuesOfRow; ///< of the row

    std::string text(Bytes bytes) const
    {
        return pager.layout().version == 4 ? decodeText(bytes) : decodeAnsi(bytes, codePage);
    }
};

Result<Value> valueOf(const Column& column, Bytes bytes, Source& source)
{
    const FieldType type = fieldType(column);
    const std::size_t size = valueSize(column.type);
    if (size != 0 && bytes.size() != size) return damagedRow();
    if (type == FieldType::Numeric) return numericOf(bytes, column.scale);
    if (size != 0) return plainOf(type, bytes);
    if (type == FieldType::Text) return Value(source.text(bytes));
    if (type != FieldType::Memo) return Value(NotShown{type});
    const auto memo = readLongValue(source.pager, bytes, source.longBytesLeft);
    if (!memo) return memo.failure();
    source.longBytesLeft -= memo->size();
    return Value(source.text(*memo));
}

Result<Value> columnOf(const RowParts& parts, const Column& column, Source& source)
{
    const bool present = parts.present(column.number);
    if (fieldType(column) == FieldType::Boolean) return Value(present);
    if (!present) return Value();
    if (column.fixed()) {
        const std::size_t at = source.pager.layout().countSize + column.fixedOffset;
        const std::size_t size = valueSize(column.type) != 0 ? valueSize(column.type) : column.length;
        if (at + size > parts.body.size()) return damagedRow();
        return valueOf(column, parts.body.subspan(at, size), source);
    }
    if (column.variableIndex + std::size_t{1} >= parts.variable.size()) return Value();
    const std::size_t begin = parts.variable[column.variableIndex];
    const std::size_t end = parts.variable[column.variableIndex + std::size_t{1}];
    return valueOf(column, parts.body.subspan(begin, end - begin), source);
}

struct PutValue {
    MutableBytes row;
    std::size_t at;

    void operator()(std::int16_t held) const { put16(row, at, static_cast<std::uint16_t>(held)); }
    void operator()(std::int32_t held) const { put32(row, at, static_cast<std::uint32_t>(held)); }
    void operator()(float held) const { put32(row, at, std::bit_cast<std::uint32_t>(held)); }
    void operator()(double held) const { put64(row, at, std::bit_cast<std::uint64_t>(held)); }
    void operator()(const Date& held) const { put64(row, at, std::bit_cast<std::uint64_t>(held.serial)); }
    template<class Other>
    void operator()(const Other&) const
    {}
};

} // namespace

Status decodeRow(Bytes row, const Definition& definition, std::uint16_t codePage, Pager& pager,
                 std::vector<Value>& values, const std::vector<std::size_t>& wanted)
{
    values.assign(definition.columns.size(), Value());
    const auto parts = takeApart(row, definition, pager.layout());
    if (!parts) return parts.failure();
    Source source{codePage, pager};
    const std::size_t count = wanted.empty() ? values.size() : wanted.size();
    for (std::size_t k = 0; k < count; ++k) {
        const std::size_t i = wanted.empty() ? k : wanted[k];
        auto value = columnOf(*parts, definition.columns[i], source);
        if (!value) {
            values.assign(values.size(), Value());
            return value.failure();
        }
        values[i] = std::move(*value);
    }
    return {};
}

std::size_t rowBytes(const Definition& definition)
{
    std::size_t bytes = 2 + (definition.columns.size() + 7) / 8;
    for (const auto& column : definition.columns)
        bytes += valueSize(column.type);
    return bytes;
}

ByteVector encodeRow(const Definition& definition, const std::vector<Value>& values)
{
    ByteVector row(rowBytes(definition));
    put16(row, 0, static_cast<std::uint16_t>(definition.columns.size()));
    changeRow(row, definition, values);
    return row;
}

void changeRow(MutableBytes row, const Definition& definition, const std::vector<Value>& values)
{
    const std::size_t maskAt = row.size() - (definition.columns.size() + 7) / 8;
    for (std::size_t i = 0; i < definition.columns.size() && i < values.size(); ++i) {
        const auto& column = definition.columns[i];
        const std::size_t byte = maskAt + column.number / 8U;
        const auto bit = static_cast<std::uint8_t>(1U << (column.number % 8U));
        const bool null = values[i].isNull();
        put8(row, byte, static_cast<std::uint8_t>(null ? get8(row, byte) & ~bit : get8(row, byte) | bit));
        std::visit(PutValue{row, 2U + column.fixedOffset}, values[i].held());
    }
}

ByteVector encodeCatalogRow(const ByteVector& fixed, const std::vector<ByteVector>& variable,
                            const std::vector<bool>& present)
{
    ByteVector row;
    row.reserve(fixed.size() + 256);
    append16(row, static_cast<std::uint16_t>(present.size()));
    row.insert(row.end(), fixed.begin(), fixed.end());
    std::vector<std::uint16_t> offsets;
    for (const auto& bytes : variable) {
        offsets.push_back(static_cast<std::uint16_t>(row.size()));
        appendBytes(row, bytes);
    }
    append16(row, static_cast<std::uint16_t>(row.size()));
    for (std::size_t k = offsets.size(); k-- > 0;)
        append16(row, offsets[k]);
    append16(row, static_cast<std::uint16_t>(variable.size()));
    ByteVector mask((present.size() + 7) / 8);
    for (std::size_t i = 0; i < present.size(); ++i) {
        if (present[i]) mask[i / 8] = static_cast<std::uint8_t>(mask[i / 8] | 1U << (i % 8));
    }
    appendBytes(row, mask);
    return row;
}

} // namespace quorvel::jet
