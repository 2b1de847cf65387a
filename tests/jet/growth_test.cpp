#include "jet/fixture.h"
#include "jet/other_programs.h"
#include "jet/torn.h"

namespace quorvel::jet::testing {
namespace {

using ::testing::IsEmpty;

/// A file as if other tables had used up everything up to `pages`: those pages are marked as used.
void padTo(Disk& disk, std::uint32_t pages)
{
    auto& bytes = disk.files[kPath.string()];
    bytes.resize(std::size_t{pages} * kPageSize);
    Page page{};
    std::copy_n(bytes.begin() + kPageSize, kPageSize, page.begin());
    const std::size_t length = (pages / 8 + 4) / 4 * 4 + 5;
    ByteVector freeMap(length, 0xFF);
    put8(freeMap, 0, 0);
    put32(freeMap, 1, 0);
    for (std::uint32_t number = 0; number < pages; ++number) {
        auto& byte = freeMap[5 + number / 8];
        byte = static_cast<std::uint8_t>(byte & ~(1U << (number % 8)));
    }
    const std::size_t released = kPageSize - length - 69;
    std::fill(page.begin() + 18, page.end(), std::uint8_t{0});
    putBytes(page, kPageSize - length, freeMap);
    put16(page, 2, static_cast<std::uint16_t>(released - 18));
    put16(page, 14, static_cast<std::uint16_t>(kPageSize - length));
    put16(page, 16, static_cast<std::uint16_t>(released));
    std::copy(page.begin(), page.end(), bytes.begin() + kPageSize);
}

std::uint8_t freeMapType(const Disk& disk)
{
    const auto& bytes = disk.files.at(kPath.string());
    return bytes[kPageSize + (get16(bytes, kPageSize + 14) & 0x1FFFU)];
}

std::uint8_t ownedMapType(const Disk& disk)
{
    const auto& bytes = disk.files.at(kPath.string());
    return bytes[17 * kPageSize + (get16(bytes, 17 * kPageSize + 14) & 0x1FFFU)];
}

constexpr int kRowsPerPage = 4082 / 21;

TEST(Growth, HundredThousandRowsComeBackInTheirOrder)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 100000);
    EXPECT_EQ(valuesOf(disk), countTo(100000));
    EXPECT_THAT(faultsOf(disk.files[kPath.string()]), IsEmpty());
    EXPECT_GT(disk.files[kPath.string()].size() / kPageSize, 512U) << "the maps had to grow";
}

TEST(Growth, MapOfFreePagesTurnsIntoBitmapPages)
{
    Disk disk;
    makeFile(disk);
    padTo(disk, 31996);
    ASSERT_EQ(freeMapType(disk), 0);
    fill(disk, 0, 8 * kRowsPerPage);
    EXPECT_EQ(freeMapType(disk), 1);
    EXPECT_EQ(valuesOf(disk), countTo(8 * kRowsPerPage));
    int leaked = 0;
    EXPECT_THAT(faultsOf(disk.files[kPath.string()], &leaked), IsEmpty());
    EXPECT_EQ(leaked, 31996 - 18) << "what padTo() took away";
}

TEST(Growth, MapOfOwnedPagesTurnsIntoBitmapPages)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, kRowsPerPage);
    padTo(disk, 31990);
    fill(disk, kRowsPerPage, 60 * kRowsPerPage);
    EXPECT_EQ(ownedMapType(disk), 1);
    EXPECT_EQ(valuesOf(disk), countTo(60 * kRowsPerPage));
    int leaked = 0;
    EXPECT_THAT(faultsOf(disk.files[kPath.string()], &leaked), IsEmpty());
}

TEST(Growth, SecondBitmapPageBeginsWhereTheFirstEnds)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, kRowsPerPage);
    padTo(disk, 31996);
    fill(disk, kRowsPerPage, 800 * kRowsPerPage);
    EXPECT_GT(disk.files[kPath.string()].size() / kPageSize, 32736U);
    EXPECT_EQ(valuesOf(disk), countTo(800 * kRowsPerPage));
    int leaked = 0;
    EXPECT_THAT(faultsOf(disk.files[kPath.string()], &leaked), IsEmpty());
}

TEST(Growth, FirstPageFarBackStartsTheMapThere)
{
    Disk disk;
    makeFile(disk);
    padTo(disk, 755);
    fill(disk, 0, 3);
    const auto& bytes = disk.files[kPath.string()];
    const std::size_t row = 17 * kPageSize + (get16(bytes, 17 * kPageSize + 14) & 0x1FFFU);
    EXPECT_EQ(get32(bytes, row + 1), 752U);
    EXPECT_EQ(valuesOf(disk), countTo(3));
}

int formsOf(const Disk& disk) { return freeMapType(disk) + ownedMapType(disk); }

/// Adds row `x` to a copy of `before`, killed after each number of page writes.
void killWhileMapsGrow(const Disk& before, int x)
{
    const Folder folder;
    bool finished = false;
    for (int writes = 0; !finished; ++writes) {
        Disk disk = before;
        disk.writesLeft = writes;
        {
            MemoryFiles files(disk);
            auto opened = OpenDatabase(kPath, {.files = &files});
            auto table = opened->OpenRecordset("data");
            static_cast<void>(static_cast<bool>(addRow(*table, x)));
        }
        finished = disk.writesLeft > 0;
        disk.writesLeft = -1;
        save(disk.files[kPath.string()], folder / "t.mdb");
        const auto strangers = exported(folder / "t.mdb");
        const auto seen = valuesOf(disk, Access::ReadWrite);
        EXPECT_EQ(seen, strangers) << "after write " << writes;
        EXPECT_EQ(seen, countTo(seen.size() == static_cast<std::size_t>(x) + 1 ? x + 1 : x));
        int leaked = 0;
        EXPECT_THAT(faultsOf(disk.files[kPath.string()], &leaked), IsEmpty()) << "after write " << writes;
    }
}

TEST(Growth, EveryWriteAroundTheConversionsLeavesAReadableFile)
{
    Disk start;
    makeFile(start);
    fill(start, 0, kRowsPerPage);
    padTo(start, 31998);
    // Which rows turn a map into its other form?
    std::vector<int> turning;
    Disk whole = start;
    for (int x = kRowsPerPage; x < 47 * kRowsPerPage; x += kRowsPerPage) {
        const int before = formsOf(whole);
        fill(whole, x, x + 1);
        if (formsOf(whole) != before) turning.push_back(x);
        fill(whole, x + 1, x + kRowsPerPage);
    }
    ASSERT_EQ(turning.size(), 2U) << "both maps turn on the way";
    int rows = kRowsPerPage;
    for (const int x : turning) {
        fill(start, rows, x);
        killWhileMapsGrow(start, x);
        rows = x;
    }
}

TEST(Growth, ListsOfPagesThatGrowSurviveWritesThatComeInParts)
{
    for (const std::uint32_t pages : {19U, 639U}) {
        Disk before;
        makeFile(before);
        fill(before, 0, kRowsPerPage);
        if (pages > 19) padTo(before, pages);
        const auto states =
            flushedStates(before, [](Recordset& rows) { EXPECT_TRUE(addRow(rows, kRowsPerPage)); });
        ASSERT_GE(states.size(), 4U);
        for (std::size_t i = 1; i < states.size(); ++i) {
            forEachTorn(states[i - 1], states[i], [&](Disk& torn, unsigned parts) {
                SCOPED_TRACE(std::to_string(pages) + " pages, step " + std::to_string(i) + ", sectors " +
                             std::to_string(parts));
                const auto seen = valuesOf(torn, Access::ReadWrite);
                EXPECT_EQ(seen, countTo(seen.size() > kRowsPerPage ? kRowsPerPage + 1 : kRowsPerPage));
                int leaked = 0;
                EXPECT_THAT(faultsOf(torn.files[kPath.string()], &leaked), IsEmpty());
            });
        }
        if (pages > 19) {
            Disk after;
            after.files[kPath.string()] = states.back();
            EXPECT_EQ(freeMapType(after), 1);
            EXPECT_EQ(ownedMapType(after), 1);
        }
    }
}

TEST(Deletion, OfAnyRowSurvivesAWriteThatComesInParts)
{
    Disk before;
    makeFile(before, tableOf("data", {{"x", FieldType::Single}}));
    fill(before, 0, 255);
    for (const int row : {0, 100, 248, 249, 253, 254}) {
        const auto states = flushedStates(before, [row](Recordset& rows) {
            for (int i = 0; i < row; ++i)
                EXPECT_TRUE(rows.MoveNext());
            EXPECT_TRUE(rows.Delete());
        });
        auto without = countTo(255);
        without.erase(without.begin() + row);
        for (std::size_t i = 1; i < states.size(); ++i) {
            forEachTorn(states[i - 1], states[i], [&](Disk& torn, unsigned parts) {
                const auto seen = valuesOf(torn, Access::ReadWrite);
                EXPECT_EQ(seen, seen.size() == 255 ? countTo(255) : without)
                    << "row " << row << ", sectors " << parts;
                EXPECT_THAT(faultsOf(torn.files[kPath.string()]), IsEmpty()) << row << " " << parts;
            });
        }
        Disk after;
        after.files[kPath.string()] = states.back();
        EXPECT_EQ(valuesOf(after), without);
    }
}

} // namespace
} // namespace quorvel::jet::testing
