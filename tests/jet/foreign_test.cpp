#include "jet/fixture.h"
#include "jet/jet3_file.h"

#include <cmath>

/// Files that other programs made.
namespace quorvel::jet::testing {
namespace {

using ::testing::HasSubstr;

// "data" with 500 rows of 19 bytes: pages 18 and 19 hold 194 each, page 20 the rest.
constexpr std::size_t kLastPage = 20 * kPageSize;
constexpr std::size_t kLastSlot = 500 - 2 * 194 - 1;

std::size_t slotAt(std::size_t page, std::size_t slot) { return page + 14 + 2 * slot; }

std::uint16_t offsetOf(const ByteVector& file, std::size_t page, std::size_t slot)
{
    return get16(file, slotAt(page, slot)) & 0x1FFF;
}

/// Makes the last row one that was moved to `pointer`.
void moveLastRow(ByteVector& file, std::uint32_t pointer)
{
    const auto offset = offsetOf(file, kLastPage, kLastSlot);
    put32(file, kLastPage + offset, pointer);
    put16(file, slotAt(kLastPage, kLastSlot), 0x4000 | offset);
}

/// Hides the last row but one, as the place that a moved row has come to; or deletes it.
void setLastButOne(ByteVector& file, std::uint16_t bits)
{
    const auto offset = offsetOf(file, kLastPage, kLastSlot - 1);
    put16(file, slotAt(kLastPage, kLastSlot - 1), bits | offset);
}

struct RowDamage {
    const char* name;
    void (*change)(ByteVector& file);
    const char* reason;
};

const RowDamage kMovedRows[] = {
    {"tooShortForAPointer",
     [](ByteVector& file) {
         put16(file, slotAt(kLastPage, kLastSlot), 0x4000 | (offsetOf(file, kLastPage, kLastSlot - 1) - 3));
     },
     "a row that was moved cannot be found"},
    {"toItself", [](ByteVector& file) { moveLastRow(file, rowPointer(20, kLastSlot)); }, "cannot be found"},
    {"toADeletedRow",
     [](ByteVector& file) {
         setLastButOne(file, 0xC000);
         moveLastRow(file, rowPointer(20, kLastSlot - 1));
     },
     "cannot be found"},
    {"toARowOfAnotherTable", [](ByteVector& file) { moveLastRow(file, rowPointer(14, 0)); },
     "cannot be found"},
    {"toASlotThatIsNone", [](ByteVector& file) { moveLastRow(file, rowPointer(20, 250)); },
     "cannot be found"},
    {"toTheHeader", [](ByteVector& file) { moveLastRow(file, 5); }, "cannot be found"},
    {"behindTheEnd", [](ByteVector& file) { moveLastRow(file, rowPointer(9999, 0)); },
     "page 9999 is missing"},
};

class LastRow : public ::testing::TestWithParam<RowDamage> {};

TEST_P(LastRow, ThatCannotBeReadIsToldAndTheOthersAreShown)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 500);
    GetParam().change(disk.files[kPath.string()]);
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.access = Access::ReadOnly, .files = &files});
    auto rows = opened->OpenRecordset("data");
    ASSERT_TRUE(rows) << rows.error();
    EXPECT_EQ(rows->Fields("x").Value(), Value(0.0F));
    const auto last = rows->MoveLast();
    ASSERT_FALSE(last);
    EXPECT_THAT(last.error(), HasSubstr(GetParam().reason));
    EXPECT_TRUE(rows->Fields("x").Value().isNull());
}

INSTANTIATE_TEST_SUITE_P(Moved, LastRow, ::testing::ValuesIn(kMovedRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MovedRow, IsReadWhereItCameToAndShownOnce)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 500);
    auto& file = disk.files[kPath.string()];
    setLastButOne(file, 0x8000);
    moveLastRow(file, rowPointer(20, kLastSlot - 1));
    EXPECT_EQ(valuesOf(disk), countTo(499));
}

const RowDamage kPageDamages[] = {
    {"overlappingSlots", [](ByteVector& file) { put16(file, slotAt(kLastPage, 5), 4050); },
     "the rows of a page overlap"},
    {"slotInTheSlotTable", [](ByteVector& file) { put16(file, slotAt(kLastPage, kLastSlot), 20); },
     "the rows of a page overlap"},
    {"moreSlotsThanFit", [](ByteVector& file) { put16(file, kLastPage + 12, 3000); },
     "lists more rows than it can hold"},
};

class DamagedPage : public ::testing::TestWithParam<RowDamage> {};

TEST_P(DamagedPage, IsTold)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 500);
    GetParam().change(disk.files[kPath.string()]);
    const auto outcome = opening(disk);
    ASSERT_FALSE(outcome);
    EXPECT_THAT(outcome.error(), HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(Slots, DamagedPage, ::testing::ValuesIn(kPageDamages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(DamagedPage, OfAnotherOwnerIsLeftOutAndNothingIsWritten)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 500);
    put32(disk.files[kPath.string()], kLastPage + 4, 5);
    EXPECT_EQ(valuesOf(disk), countTo(2 * 194));
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    auto rows = opened->OpenRecordset("data");
    const auto refused = addRow(*rows, 1);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("page 20 does not belong to the table that lists it"));
}

TEST(Order, DatesThatAreNoNumbersComeAfterThoseThatAre)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 200);
    auto& file = disk.files[kPath.string()];
    // The date stands behind the row's column count, its mask bit at the row's end.
    for (std::size_t slot = 0; slot < 194; ++slot) {
        const double serial = slot % 3 == 0 ? -HUGE_VAL : slot % 3 == 1 ? -static_cast<double>(slot) : NAN;
        const std::size_t row = 18 * kPageSize + offsetOf(file, 18 * kPageSize, slot);
        put64(file, row + 2, std::bit_cast<std::uint64_t>(serial));
        file[row + 18] |= 1U;
    }
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.access = Access::ReadOnly, .files = &files});
    auto rows = opened->OpenRecordset("select * from data order by time");
    std::vector<double> finite;
    for (int i = 0; i < 200; ++i, static_cast<void>(static_cast<bool>(rows->MoveNext()))) {
        const auto date = rows->Fields("time").Value().date();
        if (i < 6) {
            EXPECT_FALSE(date) << "Null first";
        } else if (i < 6 + 65) {
            finite.push_back(date->serial);
        } else {
            EXPECT_FALSE(std::isfinite(date->serial)) << i;
        }
    }
    EXPECT_TRUE(std::is_sorted(finite.begin(), finite.end()));
}

TEST(Jet3, EveryKindOfColumnIsRead)
{
    Disk disk;
    disk.files[kPath.string()] = jet3File();
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    ASSERT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("Alt");
    ASSERT_TRUE(rows) << rows.error();
    ASSERT_EQ(rows->RecordCount(), 3);
    std::vector<std::string> seen;
    for (int i = 0; i < rows->FieldCount(); ++i)
        seen.push_back(rows->Fields(i).Value().text());
    EXPECT_THAT(seen,
                ::testing::ElementsAre("true", "200", "-12345", "-123456789", "-123.4567", "-0.125", "1e+300",
                                       "1899-12-29T06:00:00", "{03020100-0504-0706-0809-0A0B0C0D0E0F}",
                                       "-12345.67", "Öl", "firstlast", "(OLE object)"));
}

TEST(Jet3, MovedRowsLongRowsAndNullsAreRead)
{
    Disk disk;
    disk.files[kPath.string()] = jet3File();
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    auto rows = opened->OpenRecordset("Alt");
    EXPECT_TRUE(rows->MoveNext());
    EXPECT_EQ(rows->Fields("Text").Value().text(), "moved");
    EXPECT_TRUE(rows->Fields("Memo").Value().isNull());
    EXPECT_TRUE(rows->Fields("Whole").Value().isNull());
    EXPECT_EQ(rows->Fields("Yes").Value(), Value(false));
    EXPECT_TRUE(rows->MoveNext());
    EXPECT_EQ(rows->Fields("Text").Value().text(), std::string(250, 'w'));
    EXPECT_EQ(rows->Fields("Memo").Value().text(), "short");
    ASSERT_FALSE(rows->Updatable());
    EXPECT_THAT(rows->Updatable().error(), HasSubstr("before 2000"));
}

TEST(Jet3, ChainThatGoesInCirclesIsRefused)
{
    Disk disk;
    auto file = jet3File();
    put32(file, 7 * kPageSize3 + kPageSize3 - 9, rowPointer(7, 0)); // the first piece leads to itself
    // From the end of the page: null mask, count, four offsets, then the fields of Picture and Memo.
    put32(file, 7 * kPageSize3 - (2 + 1 + 4 + 12 + 12), 0x00100000);
    disk.files[kPath.string()] = file;
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    auto rows = opened->OpenRecordset("Alt");
    const auto read = rows->MoveFirst();
    ASSERT_FALSE(read);
    EXPECT_THAT(read.error(), HasSubstr("a long text cannot be read"));
}

} // namespace
} // namespace quorvel::jet::testing
