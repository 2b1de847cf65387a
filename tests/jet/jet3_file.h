#pragma once

#include "jet/bytes.h"

#include <string>
#include <vector>

/// Jet 3 files, put together byte by byte: this program reads them and never writes them.
namespace quorvel::jet::testing {

inline constexpr std::size_t kPageSize3 = 2048;

/// Over bytes 18..95 of page 0.
inline constexpr std::uint8_t kHeaderMask3[] = {
    0xb5, 0x6f, 0x03, 0x62, 0x61, 0x08, 0xc2, 0x55, 0xeb, 0xa9, 0x67, 0x72, 0x43, 0x3f, 0x00, 0x9c,
    0x7a, 0x9f, 0x90, 0xff, 0x80, 0x9a, 0x31, 0xc5, 0x79, 0xba, 0xed, 0x30, 0xbc, 0xdf, 0xcc, 0x9d,
    0x63, 0xd9, 0xe4, 0xc3, 0x7b, 0x42, 0xfb, 0x8a, 0xbc, 0x4e, 0x86, 0xfb, 0xec, 0x37, 0x5d, 0x44,
    0x9c, 0xfa, 0xc6, 0x5e, 0x28, 0xe6, 0x13, 0xb6, 0x8a, 0x60, 0x54, 0x94, 0x7b, 0x36, 0xf5, 0x72,
    0xdf, 0xb1, 0x77, 0xf4, 0x13, 0x43, 0xcf, 0xaf, 0xb1, 0x33, 0x34, 0x61, 0x79, 0x5b, 0x92, 0xb5,
    0x7c, 0x2a, 0x05, 0xf1, 0x7c, 0x99, 0x01, 0x1b, 0x98, 0xfd, 0x12, 0x4f, 0x4a, 0x94, 0x6c, 0x3e,
    0x60, 0x26, 0x5f, 0x95, 0xf8, 0xd0, 0x89, 0x24, 0x85, 0x67, 0xc6, 0x1f, 0x27, 0x44, 0xd2, 0xee,
    0xcf, 0x65, 0xed, 0xff, 0x07, 0xc7, 0x46, 0xa1, 0x78, 0x16, 0x0c, 0xed, 0xe9, 0x2d};

struct Column3 {
    std::string name;
    std::uint8_t type;
    bool fixed;
    std::uint16_t number, variableIndex, fixedOffset, length;
    std::uint8_t precision = 0, scale = 0;
};

/// A row: column count, fixed area, variable values, null mask.
inline ByteVector row3(std::size_t columns, const ByteVector& fixed, const std::vector<ByteVector>& variable,
                       const std::vector<int>& present)
{
    ByteVector row{static_cast<std::uint8_t>(columns)};
    appendBytes(row, fixed);
    std::vector<std::size_t> offsets;
    for (const auto& bytes : variable) {
        offsets.push_back(row.size());
        appendBytes(row, bytes);
    }
    offsets.push_back(row.size());
    const std::size_t mask = (columns + 7) / 8;
    // The number of jump bytes follows from the length that they are part of.
    std::size_t jumps = 0;
    const auto length = [&] { return row.size() + offsets.size() + jumps + 1 + mask; };
    while ((length() - 1) / 256 > jumps)
        ++jumps;
    for (std::size_t k = offsets.size(); k-- > 0;)
        row.push_back(static_cast<std::uint8_t>(offsets[k]));
    for (std::size_t q = jumps; q-- > 0;) {
        std::size_t k = 0;
        while (k < offsets.size() && offsets[k] < 256 * (q + 1))
            ++k;
        row.push_back(k < offsets.size() ? static_cast<std::uint8_t>(k) : 0xFF);
    }
    row.push_back(static_cast<std::uint8_t>(variable.size()));
    ByteVector bits(mask);
    for (const int number : present) {
        auto& byte = bits.at(static_cast<std::size_t>(number) / 8);
        byte = static_cast<std::uint8_t>(byte | 1U << (number % 8));
    }
    appendBytes(row, bits);
    return row;
}

inline ByteVector dataPage3(std::uint32_t owner, const std::vector<ByteVector>& rows,
                            const std::vector<std::uint16_t>& flags = {})
{
    ByteVector page(kPageSize3);
    put16(page, 0, 0x0101);
    put32(page, 4, owner);
    put16(page, 8, static_cast<std::uint16_t>(rows.size()));
    std::size_t end = kPageSize3;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        end -= rows[i].size();
        putBytes(page, end, rows[i]);
        put16(page, 10 + 2 * i, static_cast<std::uint16_t>(end | (i < flags.size() ? flags[i] : 0)));
    }
    put16(page, 2, static_cast<std::uint16_t>(end - 10 - 2 * rows.size()));
    return page;
}

inline ByteVector map3(const std::vector<std::uint32_t>& pages)
{
    ByteVector row(133);
    for (const std::uint32_t page : pages)
        row[5 + page / 8] = static_cast<std::uint8_t>(row[5 + page / 8] | 1U << (page % 8));
    return row;
}

inline ByteVector definition3(const std::vector<Column3>& columns, std::uint16_t variable, std::uint32_t rows,
                              std::uint32_t maps, std::uint8_t kind)
{
    ByteVector bytes(0x2B);
    put16(bytes, 0, 0x0102);
    put16(bytes, 2, 0x4356);
    put32(bytes, 0x0C, rows);
    put8(bytes, 0x14, kind);
    put16(bytes, 0x15, static_cast<std::uint16_t>(columns.size()));
    put16(bytes, 0x17, variable);
    put16(bytes, 0x19, static_cast<std::uint16_t>(columns.size()));
    put32(bytes, 0x23, maps << 8);
    put32(bytes, 0x27, maps << 8 | 1);
    for (const auto& column : columns) {
        ByteVector block(18);
        put8(block, 0, column.type);
        put16(block, 1, column.number);
        put16(block, 3, column.variableIndex);
        put16(block, 5, column.number);
        put16(block, 9, 0x0409);
        put8(block, 11, column.precision);
        put8(block, 12, column.scale);
        put8(block, 13, column.fixed ? 3 : 2);
        put16(block, 14, column.fixedOffset);
        put16(block, 16, column.length);
        appendBytes(bytes, block);
    }
    for (const auto& column : columns) {
        append8(bytes, static_cast<std::uint8_t>(column.name.size()));
        for (const char letter : column.name)
            append8(bytes, static_cast<std::uint8_t>(letter));
    }
    append16(bytes, 0xFFFF);
    put32(bytes, 8, static_cast<std::uint32_t>(bytes.size()));
    bytes.resize(kPageSize3);
    return bytes;
}

inline ByteVector ansi(const std::string& text) { return {text.begin(), text.end()}; }

inline ByteVector header3()
{
    ByteVector page(kPageSize3);
    const std::string name("\0\1\0\0Standard Jet DB\0", 20);
    putBytes(page, 0, ansi(name));
    put32(page, 0x18, 0x100);
    put16(page, 0x3A, 0x0409);
    put16(page, 0x3C, 1252);
    for (std::size_t i = 0; i < sizeof kHeaderMask3; ++i)
        page[0x18 + i] ^= kHeaderMask3[i];
    return page;
}

/// A table "Alt" with a column of each kind, two rows, and one row that was moved to another page; "Ö" is in code
/// page 1252.
ByteVector jet3File();

} // namespace quorvel::jet::testing
