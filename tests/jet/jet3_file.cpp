#include "jet/jet3_file.h"

#include "jet/value.h"

namespace quorvel::jet::testing {

namespace {

ByteVector catalogRow(std::uint32_t id, const std::string& name, std::uint32_t flags)
{
    ByteVector fixed;
    append32(fixed, id);
    append16(fixed, 1);
    append32(fixed, flags);
    return row3(4, fixed, {ansi(name)}, {0, 1, 2, 3});
}

const std::vector<Column3> kCatalog = {
    {"Flags", 4, true, 3, 0, 6, 4},
    {"Id", 4, true, 0, 0, 0, 4},
    {"Name", 10, false, 1, 0, 0, 255},
    {"Type", 3, true, 2, 1, 4, 2},
};

const std::vector<Column3> kColumns = {
    {"Yes", 1, true, 0, 0, 0, 1},        {"Small", 2, true, 1, 0, 0, 1},
    {"Whole", 3, true, 2, 0, 1, 2},      {"Long", 4, true, 3, 0, 3, 4},
    {"Money", 5, true, 4, 0, 7, 8},      {"Single", 6, true, 5, 0, 15, 4},
    {"Double", 7, true, 6, 0, 19, 8},    {"Date", 8, true, 7, 0, 27, 8},
    {"Guid", 15, true, 8, 0, 35, 16},    {"Exact", 16, true, 9, 0, 51, 17, 10, 2},
    {"Text", 10, false, 10, 0, 0, 255},  {"Memo", 12, false, 11, 1, 0, 0},
    {"Picture", 11, false, 12, 2, 0, 0},
};

ByteVector fixedArea()
{
    ByteVector fixed;
    append8(fixed, 200);
    append16(fixed, static_cast<std::uint16_t>(-12345));
    append32(fixed, static_cast<std::uint32_t>(-123456789));
    append64(fixed, static_cast<std::uint64_t>(-1234567));
    append32(fixed, std::bit_cast<std::uint32_t>(-0.125F));
    append64(fixed, std::bit_cast<std::uint64_t>(1e300));
    append64(fixed, std::bit_cast<std::uint64_t>(-1.25));
    for (std::uint8_t i = 0; i < 16; ++i)
        append8(fixed, i);
    append8(fixed, 1);
    append32(fixed, 0);
    append32(fixed, 0);
    append32(fixed, 0);
    append32(fixed, 1234567);
    return fixed;
}

ByteVector longValue(std::uint32_t lengthAndKind, std::uint32_t pointer, const std::string& inRow = "")
{
    ByteVector field;
    append32(field, lengthAndKind);
    append32(field, pointer);
    append32(field, 0);
    appendBytes(field, ansi(inRow));
    return field;
}

ByteVector piece(std::uint32_t next, const std::string& text)
{
    ByteVector bytes;
    append32(bytes, next);
    appendBytes(bytes, ansi(text));
    return bytes;
}

} // namespace

ByteVector jet3File()
{
    const std::size_t count = kColumns.size();
    const auto chained = longValue(9, rowPointer(7, 0));
    const auto inRow = longValue(0x80000005, 0, "short");
    const auto onePiece = longValue(0x40000003, rowPointer(7, 2));
    const auto full = row3(count, fixedArea(),
                           {ansi("\xD6"
                                 "l"),
                            chained, onePiece},
                           {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    const auto wide = row3(count, ByteVector(68), {ansi(std::string(250, 'w')), inRow, {}}, {10, 11});
    const auto moved = row3(count, ByteVector(68), {ansi("moved"), {}, {}}, {10});
    ByteVector leads(8);
    put32(leads, 0, rowPointer(8, 0));
    const std::vector<ByteVector> pages = {
        header3(),
        dataPage3(1, {map3({}), map3({})}),
        definition3(kCatalog, 1, 2, 3, 0x53),
        dataPage3(0, {map3({4}), map3({}), map3({6, 8}), map3({})}),
        dataPage3(2, {catalogRow(2, "MSysObjects", 0x80000000), catalogRow(5, "Alt", 0)}),
        definition3(kColumns, 3, 3, 3, 0x4E),
        dataPage3(5, {full, ByteVector(20, 0xEE), leads, wide}, {0, 0xC000, 0x4000, 0}),
        dataPage3(0x4C41564C, {piece(rowPointer(7, 1), "first"), piece(0, "lastXX"), ansi("ole")}),
        dataPage3(5, {moved}, {0x8000}),
    };
    ByteVector file;
    for (const auto& page : pages)
        appendBytes(file, page);
    // The second table's maps are rows 2 and 3 of the map page.
    put32(file, 5 * kPageSize3 + 0x23, rowPointer(3, 2));
    put32(file, 5 * kPageSize3 + 0x27, rowPointer(3, 3));
    return file;
}

} // namespace quorvel::jet::testing
