#include "jet/fixture.h"
#include "jet/other_programs.h"
#include "jet/torn.h"

namespace quorvel::jet::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Appends one row to a copy of `before`, killed after `writes` page writes. @return the disk as it was left.
Disk killedAfter(const Disk& before, int writes, int x, bool& finished)
{
    Disk disk = before;
    disk.writesLeft = writes;
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.durability = Durability::EachUpdate, .files = &files});
    EXPECT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("data");
    EXPECT_TRUE(rows) << rows.error();
    EXPECT_TRUE(rows->Updatable());
    static_cast<void>(static_cast<bool>(addRow(*rows, x)));
    finished = disk.writesLeft > 0;
    return disk;
}

/// Kills an append after each number of page writes: every state is read by mdb-export and by us with every row
/// that was there before, is repaired by the next opening, and takes the row again.
void killEverywhere(const Disk& before, int rowsBefore, int mostLeaked = 0)
{
    const Folder folder;
    bool finished = false;
    for (int writes = 0; !finished; ++writes) {
        ASSERT_LT(writes, 20);
        SCOPED_TRACE("killed after page write " + std::to_string(writes));
        Disk disk = killedAfter(before, writes, rowsBefore, finished);
        disk.writesLeft = -1;
        save(disk.files[kPath.string()], folder / "t.mdb");
        auto seen = exported(folder / "t.mdb");
        const bool arrived = seen.size() == static_cast<std::size_t>(rowsBefore) + 1;
        EXPECT_EQ(seen, countTo(arrived ? rowsBefore + 1 : rowsBefore));
        EXPECT_EQ(valuesOf(disk), seen);
        EXPECT_EQ(valuesOf(disk, Access::ReadWrite), seen);
        // A list of pages that was begun on a page of its own may stay behind, unused.
        int leaked = 0;
        EXPECT_THAT(faultsOf(disk.files[kPath.string()], &leaked), IsEmpty());
        if (!arrived) fill(disk, rowsBefore, rowsBefore + 1);
        EXPECT_EQ(valuesOf(disk), countTo(rowsBefore + 1));
        leaked = 0;
        EXPECT_THAT(faultsOf(disk.files[kPath.string()], &leaked), IsEmpty());
        EXPECT_LE(leaked, mostLeaked);
    }
}

TEST(Crash, FirstRowMayDieAtAnyWrite)
{
    Disk disk;
    makeFile(disk);
    killEverywhere(disk, 0);
}

TEST(Crash, RowOnAStartedPageMayDieAtAnyWrite)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 7);
    killEverywhere(disk, 7);
}

TEST(Crash, RowThatOpensAPageMayDieAtAnyWrite)
{
    Disk disk;
    makeFile(disk);
    const int perPage = 4082 / (2 + 16 + 1 + 2);
    fill(disk, 0, perPage);
    killEverywhere(disk, perPage);
}

TEST(Crash, RowThatMakesTheMapsGrowMayDieAtAnyWrite)
{
    Disk disk;
    makeFile(disk, tableOf("data", {{"x", FieldType::Single}}));
    // Rows of a page are killed by its slots: 255 a page. Page 512 is the first beyond the maps.
    const int perPage = 4082 / (2 + 4 + 1 + 2) < 255 ? 4082 / (2 + 4 + 1 + 2) : 255;
    fill(disk, 0, perPage * (512 - 18));
    killEverywhere(disk, perPage * (512 - 18), 1);
}

TEST(Crash, DeletionAndChangeMayDieAtAnyWrite)
{
    Disk before;
    makeFile(before);
    fill(before, 0, 3);
    for (int writes = 0; writes < 4; ++writes) {
        SCOPED_TRACE("killed after page write " + std::to_string(writes));
        Disk disk = before;
        {
            disk.writesLeft = writes;
            MemoryFiles files(disk);
            auto opened = OpenDatabase(kPath, {.files = &files});
            auto rows = opened->OpenRecordset("data");
            EXPECT_TRUE(rows->MoveLast());
            static_cast<void>(static_cast<bool>(rows->Delete()));
            EXPECT_TRUE(rows->MoveFirst());
            rows->Edit();
            rows->Fields("x").SetValue(77);
            static_cast<void>(static_cast<bool>(rows->Update()));
        }
        disk.writesLeft = -1;
        auto seen = valuesOf(disk, Access::ReadWrite);
        const std::vector<double> expected[] = {{0, 1, 2}, {0, 1}, {0, 1}, {77, 1}};
        EXPECT_EQ(seen, expected[writes]);
        EXPECT_THAT(faultsOf(disk.files[kPath.string()]), IsEmpty());
    }
}

TEST(Crash, NewDatabaseNeverAppearsHalfMade)
{
    Disk whole;
    makeFile(whole);
    const int all = static_cast<int>(whole.writes.size());
    for (int writes = 0; writes < all; ++writes) {
        Disk disk;
        disk.writesLeft = writes;
        MemoryFiles files(disk);
        auto made = CreateDatabase(kPath, kGeneralLocale, &files);
        ASSERT_TRUE(made);
        EXPECT_TRUE(made->Append(readings()));
        const auto closed = made->Close();
        EXPECT_FALSE(closed);
        EXPECT_THAT(disk.files, IsEmpty());
    }
}

TEST(Crash, FullDiskIsToldAndEarlierRowsStay)
{
    Disk disk;
    makeFile(disk);
    disk.bytesLeft = 2 * kPageSize;
    int written = 0;
    {
        MemoryFiles files(disk);
        auto opened = OpenDatabase(kPath, {.files = &files});
        auto rows = opened->OpenRecordset("data");
        Status done = addRow(*rows, 0);
        while (done && written < 10000)
            done = addRow(*rows, ++written);
        ASSERT_FALSE(done);
        EXPECT_THAT(done.error(), HasSubstr("t.mdb could not be written: No space left on device"));
        EXPECT_EQ(rows->RecordCount(), written);
        disk.bytesLeft = SIZE_MAX;
        EXPECT_TRUE(addRow(*rows, written)) << "there is room again";
        EXPECT_TRUE(opened->Close());
    }
    EXPECT_EQ(valuesOf(disk), countTo(written + 1));
    EXPECT_THAT(faultsOf(disk.files[kPath.string()]), IsEmpty());
}

TEST(Crash, PageThatCameToTheDiskInPartsLosesAtMostItsLastRow)
{
    Disk before;
    makeFile(before);
    fill(before, 0, 9);
    Disk after = before;
    fill(after, 9, 10);
    const std::size_t page = 18 * kPageSize;
    for (unsigned parts = 0; parts < 256; ++parts) {
        Disk torn = before;
        auto& bytes = torn.files[kPath.string()];
        for (std::size_t sector = 0; sector < 8; ++sector) {
            if ((parts >> sector & 1) == 0) continue;
            const auto from =
                after.files[kPath.string()].begin() + static_cast<std::ptrdiff_t>(page + sector * kSector);
            std::copy(from, from + kSector,
                      bytes.begin() + static_cast<std::ptrdiff_t>(page + sector * kSector));
        }
        const auto seen = valuesOf(torn, Access::ReadWrite);
        EXPECT_EQ(seen, countTo(seen.size() == 10 ? 10 : 9)) << "sectors " << parts;
        EXPECT_THAT(faultsOf(bytes), IsEmpty()) << "sectors " << parts;
    }
}

struct TornCase {
    const char* name;
    int rows;
    int slots; ///< those behind the rows held rows that were deleted
};

class TornPage : public ::testing::TestWithParam<TornCase> {
protected:
    TornPage()
    {
        makeFile(before_);
        fill(before_, 0, GetParam().rows);
        MemoryFiles files(before_);
        auto opened = OpenDatabase(kPath, {.files = &files});
        auto rows = opened->OpenRecordset("data");
        for (int slot = GetParam().rows; slot < GetParam().slots; ++slot) {
            EXPECT_TRUE(addRow(*rows, 1e30));
            EXPECT_TRUE(rows->MoveLast());
            EXPECT_TRUE(rows->Delete());
        }
        EXPECT_TRUE(opened->Close());
    }

    /// The file as each flush left it while one more row was added; first without it.
    std::vector<ByteVector> flushedStates()
    {
        Disk disk = before_;
        std::vector<ByteVector> states{disk.files[kPath.string()]};
        MemoryFiles files(disk);
        auto opened = OpenDatabase(kPath, {.durability = Durability::EachUpdate, .files = &files});
        auto rows = opened->OpenRecordset("data");
        disk.atSync = [&] { states.push_back(disk.files[kPath.string()]); };
        EXPECT_TRUE(addRow(*rows, GetParam().rows));
        disk.atSync = nullptr;
        return states;
    }

    Disk before_;
};

TEST_P(TornPage, ShowsTheRowWholeOrNotAtAll)
{
    const auto states = flushedStates();
    ASSERT_GE(states.size(), 3U);
    for (std::size_t i = 1; i < states.size(); ++i) {
        const auto sectors = differingSectors(states[i - 1], states[i]);
        ASSERT_LE(sectors.size(), 8U);
        for (unsigned parts = 0; parts >> sectors.size() == 0; ++parts) {
            Disk torn;
            auto& bytes = torn.files[kPath.string()] = states[i - 1];
            for (std::size_t k = 0; k < sectors.size(); ++k) {
                if ((parts >> k & 1) == 0) continue;
                std::copy_n(states[i].begin() + static_cast<std::ptrdiff_t>(sectors[k]), kSector,
                            bytes.begin() + static_cast<std::ptrdiff_t>(sectors[k]));
            }
            const auto seen = valuesOf(torn, Access::ReadWrite);
            const int rows = GetParam().rows;
            EXPECT_EQ(seen, countTo(seen.size() > static_cast<std::size_t>(rows) ? rows + 1 : rows));
            EXPECT_THAT(faultsOf(bytes), IsEmpty()) << "step " << i << ", sectors " << parts;
        }
    }
    Disk after;
    after.files[kPath.string()] = states.back();
    EXPECT_EQ(valuesOf(after), countTo(GetParam().rows + 1)) << "on the disk when Update() returns";
}

// Rows are 19 bytes long: the 27th lies across a border of sectors; slot 249 is the first of the second sector.
INSTANTIATE_TEST_SUITE_P(
    Crash, TornPage,
    ::testing::Values(TornCase{"StartedPage", 9, 9}, TornCase{"RowAcrossSectors", 26, 26},
                      TornCase{"RowBehindTheBorder", 27, 27}, TornCase{"OverADeletedRow", 9, 10},
                      TornCase{"LastSlotOfSector", 9, 248}, TornCase{"FirstSlotOfNextSector", 9, 249},
                      TornCase{"Slot250", 9, 250}),
    [](const auto& row) { return std::string(row.param.name); });

/// Lets the n-th flush fail while a row is added: the reason says whether the row may be there, the next row follows
/// in order, and the count is right.
void failFlush(const Disk& before, int rowsBefore, int flush)
{
    Disk disk = before;
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.durability = Durability::EachUpdate, .files = &files});
    auto rows = opened->OpenRecordset("data");
    disk.syncsLeft = flush;
    const auto failed = addRow(*rows, rowsBefore);
    disk.syncsLeft = -1;
    ASSERT_FALSE(failed);
    const bool arrived = valuesOf(disk).size() > static_cast<std::size_t>(rowsBefore);
    EXPECT_EQ(failed.error().find("may be in the file") != std::string::npos, arrived);
    const int next = rowsBefore + (arrived ? 1 : 0);
    EXPECT_TRUE(addRow(*rows, next));
    EXPECT_TRUE(opened->Close());
    EXPECT_EQ(valuesOf(disk), countTo(next + 1));
    int leaked = 0;
    EXPECT_THAT(faultsOf(disk.files[kPath.string()], &leaked), IsEmpty());
}

TEST(Crash, FailedFlushTellsWhetherTheRowMayBeInTheFile)
{
    Disk disk;
    makeFile(disk);
    for (int flush = 0; flush < 3; ++flush)
        failFlush(disk, 0, flush);
    fill(disk, 0, 5);
    for (int flush = 0; flush < 2; ++flush)
        failFlush(disk, 5, flush);
}

TEST(Crash, FailedFlushOfADeletionLeavesTheCountRight)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 5);
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.durability = Durability::EachUpdate, .files = &files});
    auto rows = opened->OpenRecordset("data");
    EXPECT_TRUE(rows->MoveLast());
    disk.syncsLeft = 0;
    EXPECT_FALSE(rows->Delete());
    disk.syncsLeft = -1;
    EXPECT_TRUE(opened->Close());
    EXPECT_EQ(valuesOf(disk), countTo(4));
    EXPECT_THAT(faultsOf(disk.files[kPath.string()]), IsEmpty());
}

TEST(Crash, IncompleteLastPageIsCutOffBeforeWriting)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 5);
    disk.files[kPath.string()].resize(disk.files[kPath.string()].size() + 1000, 0xAA);
    EXPECT_EQ(valuesOf(disk), countTo(5));
    EXPECT_EQ(disk.files[kPath.string()].size() % kPageSize, 1000U) << "reading alone changes nothing";
    fill(disk, 5, 300);
    EXPECT_EQ(valuesOf(disk), countTo(300));
    EXPECT_THAT(faultsOf(disk.files[kPath.string()]), IsEmpty());
}

TEST(Crash, RowsReachTheDiskEvenWhenTheirCountCannotBeWritten)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 1);
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    auto rows = opened->OpenRecordset("data");
    disk.writesLeft = 1;
    EXPECT_TRUE(addRow(*rows, 1));
    disk.syncs = 0;
    const auto closed = opened->Close();
    ASSERT_FALSE(closed);
    EXPECT_THAT(closed.error(), HasSubstr("could not be written"));
    EXPECT_EQ(disk.syncs, 1);
    disk.writesLeft = -1;
    EXPECT_EQ(valuesOf(disk), countTo(2));
}

TEST(Crash, EachUpdateIsFlushedWhenAskedFor)
{
    Disk disk;
    makeFile(disk);
    MemoryFiles files(disk);
    for (const auto durability : {Durability::AtClose, Durability::EachUpdate}) {
        auto opened = OpenDatabase(kPath, {.durability = durability, .files = &files});
        auto rows = opened->OpenRecordset("data");
        disk.syncs = 0;
        EXPECT_TRUE(addRow(*rows, 1));
        EXPECT_EQ(disk.syncs > 0, durability == Durability::EachUpdate);
        disk.syncs = 0;
        EXPECT_TRUE(opened->Close());
        EXPECT_EQ(disk.syncs, 1);
    }
}

} // namespace
} // namespace quorvel::jet::testing
