#include "jet/memory_file.h"
#include "jet/new_file.h"
#include "jet/store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvel::jet {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

const Date kStamp = *Date::of({2024, 1, 2, 3, 4, 5});

std::uint32_t crc32(Bytes bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int i = 0; i < 8; ++i)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

std::vector<std::uint32_t> pageSums(Bytes file)
{
    std::vector<std::uint32_t> sums;
    for (std::size_t at = 0; at < file.size(); at += kPageSize)
        sums.push_back(crc32(file.subspan(at, kPageSize)));
    return sums;
}

ByteVector fileOf(const NewFile& made)
{
    ByteVector bytes;
    for (const auto& page : made.pages())
        appendBytes(bytes, page);
    return bytes;
}

NewFile withT1()
{
    NewFile made(kStamp);
    TableDef table("T1");
    table.Append({"N", FieldType::Integer});
    table.Append({"V", FieldType::Single});
    table.Append({"At", FieldType::Date});
    EXPECT_TRUE(made.append(table));
    return made;
}

TEST(Golden, EmptyDatabase)
{
    const auto file = fileOf(NewFile(kStamp));
    EXPECT_THAT(pageSums(file),
                ElementsAre(0x751c4e12, 0xf627d4c0, 0xbb9cc2ec, 0x5a5da9a2, 0xcc462a2a, 0xbc028c0a,
                            0xd2088285, 0xeaa9fde4, 0xf4c8cfc5, 0x589e9da0, 0x40ef71e4, 0x5313d8fa,
                            0x5313d8fa, 0x5313d8fa, 0x25e7fd51, 0x49e7871a));
    EXPECT_EQ(crc32(file), 0x9b138875U);
}

TEST(Golden, DatabaseWithOneTable)
{
    const auto file = fileOf(withT1());
    EXPECT_THAT(pageSums(file),
                ElementsAre(0x751c4e12, 0xf77af211, 0x78aaf812, 0x7cd3c493, 0xcc462a2a, 0xbc028c0a,
                            0xd2088285, 0xf40e6275, 0x305a5a35, 0xe5ccfead, 0x40ef71e4, 0x5313d8fa,
                            0x5313d8fa, 0x5313d8fa, 0x7b0d8bf6, 0xd9795f33, 0x1c404c73, 0x882dddf1));
    EXPECT_EQ(crc32(file), 0x6c4c729fU);
}

/// The file after each step, with the pages written on the way.
class GoldenSteps : public ::testing::Test {
protected:
    GoldenSteps()
    {
        disk_.files["t.mdb"] = fileOf(withT1());
        testing::MemoryFiles files(disk_);
        auto opened = OpenDatabase("t.mdb", {.files = &files});
        EXPECT_TRUE(opened) << opened.error();
        database_.emplace(std::move(*opened));
        auto rows = database_->OpenRecordset("T1");
        EXPECT_TRUE(rows) << rows.error();
        rows_.emplace(std::move(*rows));
    }

    void append(const Value& n, const Value& v, const Value& at)
    {
        rows_->AddNew();
        rows_->Fields("N").SetValue(n);
        rows_->Fields("V").SetValue(v);
        rows_->Fields("At").SetValue(at);
        disk_.writes.clear();
        const auto done = rows_->Update();
        EXPECT_TRUE(done) << done.error();
    }

    void stepC() { append(1, 1.5, kStamp); }
    void stepD() { append(kNull, -0.25, kNull); }
    void stepE()
    {
        EXPECT_TRUE(rows_->MoveFirst());
        rows_->Edit();
        rows_->Fields("N").SetValue(kNull);
        rows_->Fields("V").SetValue(2);
        disk_.writes.clear();
        EXPECT_TRUE(rows_->Update());
    }
    void stepF()
    {
        EXPECT_TRUE(rows_->MoveLast());
        disk_.writes.clear();
        EXPECT_TRUE(rows_->Delete());
    }

    const ByteVector& file() { return disk_.files["t.mdb"]; }

    /// Sums of pages 1, 16, 17, 18 and of the whole file.
    std::vector<std::uint32_t> sums()
    {
        const auto all = pageSums(file());
        return {all.at(1), all.at(16), all.at(17), all.at(18), crc32(file())};
    }

    testing::Disk disk_;
    std::optional<Database> database_;
    std::optional<Recordset> rows_;
};

TEST_F(GoldenSteps, FirstRowOpensAPage)
{
    stepC();
    EXPECT_THAT(disk_.writes, ElementsAre(18, 1, 17, 16));
    EXPECT_THAT(sums(), ElementsAre(0x42867912, 0x5a1f472d, 0x6d32d68f, 0x30cc99cb, 0x103fe437));
    EXPECT_EQ(file().size(), 77824U);
    EXPECT_THAT(part(file(), 18 * kPageSize + 0xfef, 17),
                ElementsAreArray({0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0xc0, 0x3f, 0x02, 0xc9, 0x3a, 0x17,
                                  0xa4, 0x1d, 0xe6, 0x40, 0x07}));
}

TEST_F(GoldenSteps, SecondRowFollowsOnTheSamePage)
{
    stepC();
    stepD();
    EXPECT_THAT(disk_.writes, ElementsAre(18, 16));
    EXPECT_THAT(sums(), ElementsAre(0x42867912, 0x90fe5acf, 0x6d32d68f, 0xa0105495, 0x02e685ed));
}

TEST_F(GoldenSteps, UpdateInPlaceWritesOnePage)
{
    stepC();
    stepD();
    stepE();
    EXPECT_THAT(disk_.writes, ElementsAre(18));
    EXPECT_THAT(sums(), ElementsAre(0x42867912, 0x90fe5acf, 0x6d32d68f, 0x71fc9666, 0xd30a471e));
}

TEST_F(GoldenSteps, DeletedRowGivesItsBytesBack)
{
    stepC();
    stepD();
    stepE();
    stepF();
    EXPECT_THAT(disk_.writes, ElementsAre(18, 16));
    EXPECT_THAT(sums(), ElementsAre(0x42867912, 0x5a1f472d, 0x6d32d68f, 0x16805ad7, 0x3673272b));
}

TEST_F(GoldenSteps, RowAfterADeletionTakesTheNextSlot)
{
    stepC();
    stepD();
    stepE();
    stepF();
    append(-1, kNull, *Date::of({1899, 12, 30, 12}));
    EXPECT_THAT(disk_.writes, ElementsAre(18, 16));
    EXPECT_THAT(sums(), ElementsAre(0x42867912, 0x90fe5acf, 0x6d32d68f, 0xa91cde60, 0x0bea0f18));
}

} // namespace
} // namespace quorvel::jet
