#include "jet/fixture.h"
#include "jet/layout.h"

/// Tables of which rows are lost: what is left must not pass for the whole.
namespace quorvel::jet::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::size_t kFirstPage = 18;
constexpr std::size_t kDefinition = 16 * kPageSize;
constexpr int kPerPage = 194;

/// A file of 500 rows on three pages.
class MissingRows : public ::testing::Test {
protected:
    MissingRows()
    {
        makeFile(disk);
        fill(disk, 0, 500);
        EXPECT_EQ(get32(bytes(), kDefinition + kJet4.rowCount), 500U);
    }
    ByteVector& bytes() { return disk.files[kPath.string()]; }
    auto page(std::size_t number)
    {
        return bytes().begin() + static_cast<std::ptrdiff_t>(number * kPageSize);
    }
    void zeroSecondPage() { std::fill_n(page(kFirstPage + 1), kPageSize, std::uint8_t{0}); }

    /// Why rows are missing; "" when none are. The rows that there are must be `rows`.
    std::string missing(int rows, Access access = Access::ReadOnly)
    {
        MemoryFiles files(disk);
        auto opened = OpenDatabase(kPath, {.access = access, .files = &files});
        EXPECT_TRUE(opened) << opened.error();
        auto found = opened->OpenRecordset("data");
        EXPECT_TRUE(found) << found.error();
        EXPECT_EQ(found->RecordCount(), rows);
        const auto complete = found->Complete();
        return complete ? "" : complete.error();
    }

    Disk disk;
};

TEST_F(MissingRows, NoneOfASoundFile) { EXPECT_EQ(missing(500), ""); }

TEST_F(MissingRows, ThoseOfAZeroedPageAreTold)
{
    zeroSecondPage();
    EXPECT_EQ(missing(500 - kPerPage),
              "t.mdb is damaged: 194 of the 500 rows of a table are missing. Use \"Compact and Repair\" in "
              "Access, or an earlier copy.");
}

TEST_F(MissingRows, ThoseOfAPageThatAnotherTableTookAreTold)
{
    put32(bytes(), (kFirstPage + 1) * kPageSize + 4, 2);
    EXPECT_THAT(missing(500 - kPerPage), HasSubstr("194 of the 500 rows"));
}

TEST_F(MissingRows, ThoseOfAPageThatLostItsSlotsAreToldAndNotForgotten)
{
    put16(bytes(), (kFirstPage + 1) * kPageSize + kJet4.slotCount, 0);
    const auto before = bytes();
    EXPECT_THAT(missing(500 - kPerPage, Access::ReadWrite), HasSubstr("194 of the 500 rows"));
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    auto rows = opened->OpenRecordset("data");
    const auto added = addRow(*rows, 1);
    ASSERT_FALSE(added);
    EXPECT_THAT(added.error(), StartsWith("t.mdb is damaged: 194 of the 500 rows of a table are missing."));
    EXPECT_TRUE(opened->Close());
    EXPECT_EQ(bytes(), before) << "the count would agree with the loss";
}

TEST_F(MissingRows, AreNotBlankOnesWhereTheLastSectorOfAPageIsZero)
{
    std::fill_n(page(kFirstPage + 2) - 512, 512, std::uint8_t{0});
    for (const auto access : {Access::ReadOnly, Access::ReadWrite}) {
        MemoryFiles files(disk);
        auto opened = OpenDatabase(kPath, {.access = access, .files = &files});
        auto rows = opened->OpenRecordset("data");
        int unread = 0;
        for (auto read = rows->MoveFirst(); !rows->Eof(); read = rows->MoveNext()) {
            if (read) continue;
            ++unread;
            EXPECT_THAT(read.error(), HasSubstr("a row of the table cannot be read"));
        }
        EXPECT_EQ(unread, 26) << "of 19 bytes each, and one that begins before";
    }
}

TEST_F(MissingRows, OfTheListOfTablesAreToldWhenATableIsNotFound)
{
    for (std::size_t at = 0; at < bytes().size(); at += kPageSize) {
        if (get8(bytes(), at) != 1 || get32(bytes(), at + 4) != 2) continue;
        const auto slots = std::size_t{get16(bytes(), at + kJet4.slotCount)};
        for (auto slot = slots - 2; slot < slots; ++slot) {
            const auto entry = at + kJet4.slotTable + 2 * slot;
            put16(bytes(), entry, get16(bytes(), entry) | 0xC000);
        }
    }
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.access = Access::ReadOnly, .files = &files});
    ASSERT_TRUE(opened) << opened.error();
    const auto rows = opened->OpenRecordset("data");
    ASSERT_FALSE(rows);
    EXPECT_THAT(rows.error(), AllOf(StartsWith("t.mdb is damaged: 2 of the "),
                                    HasSubstr(" rows of a table are missing. Use ")));
}

TEST_F(MissingRows, IsNotWhatAKilledDeletionLeaves)
{
    put32(bytes(), kDefinition + kJet4.rowCount, 501);
    EXPECT_EQ(missing(500), "");
    EXPECT_EQ(missing(500, Access::ReadWrite), "");
    put32(bytes(), kDefinition + kJet4.rowCount, 502);
    EXPECT_THAT(missing(500), HasSubstr("2 of the 502 rows"));
}

TEST_F(MissingRows, IsNotWhatAKilledAppendingLeaves)
{
    put32(bytes(), kDefinition + kJet4.rowCount, 499);
    EXPECT_EQ(missing(500), "");
}

} // namespace
} // namespace quorvel::jet::testing
