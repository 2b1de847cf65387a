#include "jet/row.h"

#include "jet/data_page.h"
#include "jet/definition.h"
#include "jet/memory_file.h"
#include "jet/text_coding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// Rows and table definitions of Jet 4 files that other programs made: kinds of columns that are read and never
/// written, and what must be told as damaged.
namespace quorvel::jet {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr std::uint32_t kLongValueOwner = 0x4C41564C;

/// A file of these pages.
class Pages {
public:
    explicit Pages(const std::vector<Page>& pages)
    {
        auto& file = disk_.files["pages"];
        for (const auto& page : pages)
            appendBytes(file, page);
    }

    Pager pager()
    {
        const auto pages = static_cast<std::uint32_t>(disk_.files["pages"].size() / kPageSize);
        return {std::make_unique<testing::MemoryFile>(disk_, "pages"), kJet4, pages};
    }

private:
    testing::Disk disk_;
};

ByteVector ascii(std::string_view text) { return {text.begin(), text.end()}; }

ByteVector longValue(std::uint32_t lengthAndKind, std::uint32_t pointer, const ByteVector& inRow = {})
{
    ByteVector field;
    append32(field, lengthAndKind);
    append32(field, pointer);
    append32(field, 0);
    appendBytes(field, inRow);
    return field;
}

ByteVector piece(std::uint32_t next, const ByteVector& bytes)
{
    ByteVector row;
    append32(row, next);
    appendBytes(row, bytes);
    return row;
}

constexpr std::uint32_t kOnePiece = 0x40000000;
constexpr std::uint32_t kInRow = 0x80000000;

/// Page 1: a text in two pieces, one in a single piece, and a piece that leads to itself.
std::vector<Page> longValuePages()
{
    const auto text = encodeText("first, then last").value_or(ByteVector{});
    Page page = newDataPage(kLongValueOwner);
    addRow(page, piece(rowPointer(1, 1), {text.begin(), text.begin() + 14}));
    addRow(page, piece(0, {text.begin() + 14, text.end()}));
    addRow(page, ascii("\xFF\xFEwhole"));
    addRow(page, piece(rowPointer(1, 3), ascii("again")));
    Page foreign = newDataPage(7);
    addRow(foreign, ascii("\xFF\xFE"
                          "of a table"));
    return {Page{}, page, foreign};
}

Column fixedColumn(FieldType type, std::uint16_t number, std::uint16_t offset, std::uint8_t scale = 0)
{
    return {.name = {},
            .type = static_cast<std::uint8_t>(type),
            .number = number,
            .flags = kFixedColumn,
            .fixedOffset = offset,
            .scale = scale};
}

Column variableColumn(FieldType type, std::uint16_t number, std::uint16_t index)
{
    return {.name = {}, .type = static_cast<std::uint8_t>(type), .number = number, .variableIndex = index};
}

/// Columns that are fixed: number 0 to 5; variable: 6 to 9.
Definition everyKind()
{
    Definition definition;
    definition.maxColumns = 10;
    definition.variableColumns = 4;
    definition.columns = {
        fixedColumn(FieldType::Boolean, 0, 0),       fixedColumn(FieldType::Byte, 1, 0),
        fixedColumn(FieldType::Currency, 2, 1),      fixedColumn(FieldType::Numeric, 3, 9, 3),
        fixedColumn(FieldType::Guid, 4, 26),         variableColumn(FieldType::Text, 6, 0),
        variableColumn(FieldType::Memo, 7, 1),       variableColumn(FieldType::Long, 8, 2),
        variableColumn(FieldType::LongBinary, 9, 3),
    };
    return definition;
}

ByteVector fixedArea()
{
    ByteVector fixed;
    append8(fixed, 200);
    append64(fixed, static_cast<std::uint64_t>(-1234567));
    append8(fixed, 1);
    for (const std::uint32_t word : {0U, 0U, 1U, 5U}) // 2^32 + 5
        append32(fixed, word);
    for (std::uint8_t i = 0; i < 16; ++i)
        append8(fixed, i);
    return fixed;
}

ByteVector longBytes(std::int32_t number)
{
    ByteVector bytes;
    append32(bytes, static_cast<std::uint32_t>(number));
    return bytes;
}

/// A row with all fixed columns; of the variable ones those that hold anything are not Null.
ByteVector rowWith(const std::vector<ByteVector>& variable)
{
    std::vector<bool> present(6, true);
    for (const auto& bytes : variable)
        present.push_back(!bytes.empty());
    return encodeCatalogRow(fixedArea(), variable, present);
}

std::vector<std::string> textsOf(const ByteVector& row)
{
    Pages pages(longValuePages());
    Pager pager = pages.pager();
    std::vector<Value> values;
    const auto read = decodeRow(row, everyKind(), 1252, pager, values);
    EXPECT_TRUE(read) << read.error();
    std::vector<std::string> texts;
    for (const auto& value : values)
        texts.push_back(value.isNull() ? "Null" : value.text());
    return texts;
}

TEST(Row, EveryKindOfColumnIsRead)
{
    const auto row = rowWith({encodeText("Öl 方").value_or(ByteVector{}), longValue(32, rowPointer(1, 0)),
                              longBytes(-5), longValue(3 | kOnePiece, 0)});
    EXPECT_THAT(textsOf(row), ElementsAre("true", "200", "-123.4567", "-4294967.301",
                                          "{03020100-0504-0706-0809-0A0B0C0D0E0F}", "Öl 方",
                                          "first, then last", "-5", "(OLE object)"));
}

TEST(Row, CompressedTextAndTheOtherKindsOfLongTextsAreRead)
{
    EXPECT_THAT(textsOf(rowWith({ascii("\xFF\xFE"
                                       "abc"),
                                 longValue(7 | kOnePiece, rowPointer(1, 2)),
                                 {},
                                 {}}))
                    .at(5),
                "abc");
    EXPECT_THAT(textsOf(rowWith({{}, longValue(7 | kOnePiece, rowPointer(1, 2)), longBytes(0), {}})).at(6),
                "whole");
    EXPECT_THAT(
        textsOf(rowWith({{}, longValue(6 | kInRow, 0, ascii("\xFF\xFEhere")), longBytes(0), {}})).at(6),
        "here");
}

TEST(Row, NullsAndColumnsAddedLaterAreNull)
{
    EXPECT_THAT(textsOf(encodeCatalogRow(fixedArea(), {{}, {}, {}, {}}, std::vector<bool>(10, false))),
                ElementsAre("false", "Null", "Null", "Null", "Null", "Null", "Null", "Null", "Null"));
    // A row of the time when there were three columns, none of them variable.
    ByteVector old = fixedArea();
    old.insert(old.begin(), {3, 0});
    for (const std::uint16_t number : {std::uint16_t{2 + 42}, std::uint16_t{0}})
        append16(old, number);
    append8(old, 0x07);
    EXPECT_THAT(textsOf(old),
                ElementsAre("true", "200", "-123.4567", "Null", "Null", "Null", "Null", "Null", "Null"));
}

struct Damage {
    const char* name;
    ByteVector row;
};

ByteVector sound() { return rowWith({ascii("ab"), {}, longBytes(1), {}}); }

/// The sound row with a u16 of its offset table changed; 0 is the count of variable columns, 1 the first offset.
ByteVector withOffset(std::size_t entry, std::uint16_t value)
{
    auto row = sound();
    put16(row, row.size() - 2 - 2 - 2 * entry, value);
    return row;
}

ByteVector withMemo(const ByteVector& field) { return rowWith({{}, field, longBytes(1), {}}); }

std::vector<Damage> damages()
{
    return {
        {"empty", {}},
        {"onlyAColumnCount", {9, 0}},
        {"moreColumnsThanBytes", {0xFF, 0xFF, 1, 2, 3}},
        {"moreOffsetsThanBytes", withOffset(0, 400)},
        {"firstOffsetInTheCount", withOffset(1, 1)},
        {"fallingOffsets", withOffset(2, 43)},
        {"offsetBehindTheRow", withOffset(5, 200)},
        {"shortFixedArea", {10, 0, 1, 2, 0, 0, 0xFF, 0xFF}},
        {"numberOfAnotherSize", rowWith({{}, {}, ascii("abc"), {}})},
        {"shortLongValue", withMemo(ascii("elevenbytes"))},
        {"inRowBehindItsEnd", withMemo(longValue(10 | kInRow, 0, ascii("short")))},
        {"longValueInACircle", withMemo(longValue(0x00100000, rowPointer(1, 3)))},
        {"longValueOnAPageOfATable", withMemo(longValue(9 | kOnePiece, rowPointer(2, 0)))},
        {"longValueWithoutSlot", withMemo(longValue(9 | kOnePiece, rowPointer(1, 9)))},
        {"longValueBehindTheEnd", withMemo(longValue(9 | kOnePiece, rowPointer(99, 0)))},
    };
}

class DamagedRow : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedRow, IsToldAndAllItsValuesAreNull)
{
    Pages pages(longValuePages());
    Pager pager = pages.pager();
    std::vector<Value> values;
    ASSERT_TRUE(decodeRow(sound(), everyKind(), 1252, pager, values)) << "the row that is damaged below";
    const auto read = decodeRow(GetParam().row, everyKind(), 1252, pager, values);
    ASSERT_FALSE(read);
    EXPECT_THAT(read.error(), HasSubstr("damaged"));
    EXPECT_THAT(values, ::testing::Each(kNull));
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedRow, ::testing::ValuesIn(damages()),
                         [](const auto& row) { return std::string(row.param.name); });

Definition manyColumns(int count)
{
    Definition definition;
    definition.maxColumns = static_cast<std::uint16_t>(count);
    for (int i = 0; i < count; ++i) {
        auto column =
            fixedColumn(FieldType::Long, static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(4 * i));
        column.name = "Column " + std::to_string(i);
        definition.columns.push_back(column);
    }
    return definition;
}

/// The bytes over pages 1 and 2; the second leads to `next`.
std::vector<Page> twoPages(const ByteVector& bytes, std::uint32_t next)
{
    std::vector<Page> pages(3);
    std::copy_n(bytes.begin(), kPageSize, pages[1].begin());
    put32(pages[1], 4, 2);
    put16(pages[2], 0, 0x0102);
    put32(pages[2], 4, next);
    std::copy(bytes.begin() + kPageSize, bytes.end(), pages[2].begin() + 8);
    return pages;
}

TEST(DefinitionChain, TwoPagesAreReadAsOne)
{
    Pages pages(twoPages(encodeDefinition(manyColumns(120)), 0));
    Pager pager = pages.pager();
    const auto definition = readDefinition(pager, 1, 1252);
    ASSERT_TRUE(definition) << definition.error();
    EXPECT_EQ(definition->pages, 2U);
    ASSERT_EQ(definition->columns.size(), 120U);
    EXPECT_EQ(definition->columns.back().name, "Column 119");
    EXPECT_EQ(definition->columns.back().fixedOffset, 476);
}

TEST(DefinitionChain, CircleWrongPageAndMissingPageAreTold)
{
    const auto bytes = encodeDefinition(manyColumns(120));
    auto wrong = twoPages(bytes, 0);
    put16(wrong[2], 0, 0x0101);
    auto cut = twoPages(bytes, 0);
    put32(cut[1], 4, 0);
    const std::pair<std::vector<Page>, const char*> cases[] = {{twoPages(bytes, 1), "runs in a circle"},
                                                               {twoPages(bytes, 2), "runs in a circle"},
                                                               {twoPages(bytes, 9), "page 9 is missing"},
                                                               {wrong, "is not where it should be"},
                                                               {cut, "is shorter than it says"}};
    for (const auto& [file, reason] : cases) {
        Pages pages(file);
        Pager pager = pages.pager();
        const auto definition = readDefinition(pager, 1, 1252);
        ASSERT_FALSE(definition) << reason;
        EXPECT_THAT(definition.error(), HasSubstr(reason));
    }
}

struct DefinitionDamage {
    const char* name;
    void (*change)(ByteVector& bytes);
    const char* reason;
};

// Two columns: their blocks begin at 3F and 58, their names at 71 and 83.
const DefinitionDamage kDefinitionDamages[] = {
    {"short", [](ByteVector& bytes) { bytes.resize(0x3E); }, "is too short"},
    {"manyColumns", [](ByteVector& bytes) { put16(bytes, 0x2D, 256); }, "claims more columns"},
    {"manyPhysicalIndexes", [](ByteVector& bytes) { put32(bytes, 0x33, 33); },
     "claims more columns or indexes"},
    {"manyLogicalIndexes", [](ByteVector& bytes) { put32(bytes, 0x2F, 1001); },
     "claims more columns or indexes"},
    {"columnsBehindTheEnd", [](ByteVector& bytes) { put16(bytes, 0x2D, 9); }, "ends before its columns do"},
    {"oddName", [](ByteVector& bytes) { put16(bytes, 0x71, 15); }, "holds a column name"},
    {"longName",
     [](ByteVector& bytes) {
         bytes.resize(400);
         put16(bytes, 0x71, 130);
     },
     "holds a column name"},
    {"nameBehindTheEnd", [](ByteVector& bytes) { put16(bytes, 0x83, 100); }, "holds a column name"},
    {"numberTwice", [](ByteVector& bytes) { put16(bytes, 0x58 + 5, 0); }, "numbers its columns wrongly"},
    {"numberTooHigh", [](ByteVector& bytes) { put16(bytes, 0x58 + 5, 2); }, "numbers its columns wrongly"},
    {"cutBehindTheNames", [](ByteVector& bytes) { bytes.resize(bytes.size() - 2); },
     "does not come to its end"},
    {"indexBehindTheEnd", [](ByteVector& bytes) { put32(bytes, 0x2F, 1); }, "does not come to its end"},
    {"noEndOfTheList", [](ByteVector& bytes) { put16(bytes, bytes.size() - 2, 1); },
     "does not come to its end"},
};

class DamagedDefinition : public ::testing::TestWithParam<DefinitionDamage> {};

TEST_P(DamagedDefinition, IsTold)
{
    auto bytes = encodeDefinition(manyColumns(2));
    ASSERT_TRUE(parseDefinition(bytes, kJet4, 1252));
    GetParam().change(bytes);
    const auto definition = parseDefinition(bytes, kJet4, 1252);
    ASSERT_FALSE(definition);
    EXPECT_THAT(definition.error(), HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedDefinition, ::testing::ValuesIn(kDefinitionDamages),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace quorvel::jet
