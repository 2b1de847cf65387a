#include "jet/fixture.h"

#include <sstream>

namespace quorvel::jet::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The x column as mdb-export prints it.
std::vector<double> exported(const std::filesystem::path& path)
{
    std::istringstream lines(outputOf("mdb-export -H '" + path.string() + "' data"));
    std::vector<double> values;
    for (std::string line; std::getline(lines, line);) {
        const auto x = line.substr(line.find(',') + 1);
        values.push_back(std::stod(x));
    }
    return values;
}

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
void killEverywhere(const Disk& before, int rowsBefore)
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
        EXPECT_THAT(faultsOf(disk.files[kPath.string()]), IsEmpty());
        if (!arrived) fill(disk, rowsBefore, rowsBefore + 1);
        EXPECT_EQ(valuesOf(disk), countTo(rowsBefore + 1));
        EXPECT_THAT(faultsOf(disk.files[kPath.string()]), IsEmpty());
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
    killEverywhere(disk, perPage * (512 - 18));
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
    constexpr std::size_t kSector = 512;
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
