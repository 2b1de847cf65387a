#include "jet/fixture.h"
#include "jet/header.h"
#include "jet/jet3_file.h"

#include <algorithm>
#include <cmath>

/// Files that are refused: none of ours, or no longer whole; and tables that are read but never written.
namespace quorvel::jet::testing {
namespace {

using ::testing::HasSubstr;

class Refusal : public ::testing::Test {
protected:
    Refusal()
    {
        makeFile(disk_);
        fill(disk_, 0, 500);
    }

    ByteVector& bytes() { return disk_.files[kPath.string()]; }

    void changeHeader(std::size_t at, std::uint8_t value)
    {
        maskHeader(bytes(), kJet4);
        bytes()[at] = value;
        maskHeader(bytes(), kJet4);
    }

    void expect(const char* reason)
    {
        const auto outcome = opening(disk_);
        ASSERT_FALSE(outcome);
        EXPECT_THAT(outcome.error(), HasSubstr("t.mdb " + std::string(reason)));
    }

    Disk disk_;
};

TEST_F(Refusal, EncodedFile)
{
    changeHeader(0x3E, 7);
    expect("is encoded");
}

TEST_F(Refusal, PasswordProtectedFile)
{
    changeHeader(0x46, 'x');
    expect("has a database password");
}

TEST_F(Refusal, LaterAccess)
{
    bytes()[0x14] = 2;
    expect("was made by a later version of Access");
    const std::string ace = "Standard ACE DB";
    std::copy(ace.begin(), ace.end(), bytes().begin() + 4);
    expect("was made by Access 2007 or later");
}

TEST_F(Refusal, FileOfAMoneyProgram)
{
    const std::string name = "MSISAM Database";
    std::copy(name.begin(), name.end(), bytes().begin() + 4);
    expect("is a file of a money program");
}

TEST_F(Refusal, PasswordProtectedFileOfJet3)
{
    bytes() = jet3File();
    bytes()[0x42] ^= 'x';
    expect("has a database password");
}

/// Null in the catalog row of "data": its mask stands at the end of slot 8 of page 14.
TEST_F(Refusal, CatalogRowWithoutAnEssentialValue)
{
    const std::size_t page = 14 * kPageSize;
    const std::size_t mask = page + (get16(bytes(), page + 14 + std::size_t{2} * 7) & 0x1FFFU) - 3;
    const auto whole = bytes()[mask];
    ASSERT_EQ(whole, 0xFF);
    for (const unsigned number : {0U, 2U, 3U}) { // Id, Name, Type
        bytes()[mask] = static_cast<std::uint8_t>(whole & ~(1U << number));
        expect("has no table \"data\"");
    }
}

TEST_F(Refusal, OtherFiles)
{
    bytes() = ansi("PK\3\4 this is no database at all");
    expect("is not an Access database");
    bytes().clear();
    expect("is empty");
    disk_.files.clear();
    expect("could not be opened");
}

TEST_F(Refusal, FileOpenInAccess)
{
    disk_.lockedByAccess = true;
    expect("is open in Access");
}

TEST_F(Refusal, FileCutOffAnywhere)
{
    const ByteVector whole = bytes();
    for (std::size_t size = 1; size < whole.size(); size += 977) {
        bytes() = ByteVector(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const auto outcome = opening(disk_);
        ASSERT_FALSE(outcome) << size;
        EXPECT_THAT(outcome.error(), HasSubstr("is cut off")) << size;
    }
}

TEST_F(Refusal, GarbledPages)
{
    for (const std::size_t page : {2U, 14U, 16U, 17U, 18U}) {
        const ByteVector whole = bytes();
        std::fill_n(bytes().begin() + static_cast<std::ptrdiff_t>(page * kPageSize), kPageSize,
                    std::uint8_t{0x5A});
        MemoryFiles files(disk_);
        auto opened = OpenDatabase(kPath, {.files = &files});
        if (!opened) {
            EXPECT_THAT(opened.error(), HasSubstr("is damaged")) << page;
        } else if (auto rows = opened->OpenRecordset("data"); !rows) {
            EXPECT_THAT(rows.error(), ::testing::AnyOf(HasSubstr("is damaged"), HasSubstr("is cut off")))
                << page;
        } else {
            // A page that is no longer the table's is left out when reading, and nothing is written any more.
            ASSERT_FALSE(rows->Updatable()) << page;
            EXPECT_THAT(rows->Updatable().error(), HasSubstr("is damaged")) << page;
        }
        bytes() = whole;
    }
}

TEST_F(Refusal, TableWithAnIndexIsReadButNotWritten)
{
    put32(bytes(), 16 * kPageSize + 0x33, 1);
    // One block of key counts in front of the columns, and one of the index behind their names.
    auto& file = bytes();
    const std::size_t end = get32(file, 16 * kPageSize + 8);
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(16 * kPageSize + end - 2), 52, std::uint8_t{0});
    file.insert(file.begin() + 16 * kPageSize + 0x3F, 12, std::uint8_t{0});
    file.erase(file.begin() + 17 * kPageSize, file.begin() + 17 * kPageSize + 12 + 52);
    put32(file, 16 * kPageSize + 8, static_cast<std::uint32_t>(end + 12 + 52));
    EXPECT_EQ(valuesOf(disk_), countTo(500));
    MemoryFiles files(disk_);
    auto opened = OpenDatabase(kPath, {.files = &files});
    auto rows = opened->OpenRecordset("data");
    const auto refused = addRow(*rows, 1);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("the table has an index"));
}

void setBit(ByteVector& file, std::size_t at, std::uint32_t bit)
{
    file.at(at + bit / 8) = static_cast<std::uint8_t>(file.at(at + bit / 8) | 1U << (bit % 8));
}

constexpr std::size_t kFreeMapRow = kPageSize + 0xFBB;
constexpr std::size_t kTableMaps = 17 * kPageSize;

struct StrangeMap {
    const char* name;
    void (*change)(ByteVector& file);
    const char* reason;
};

/// A third slot that holds nothing, as a map that was deleted leaves it.
void addDeletedSlot(ByteVector& file, std::size_t page)
{
    put16(file, page + 2, static_cast<std::uint16_t>(get16(file, page + 2) - 2));
    put16(file, page + 12, 3);
    put16(file, page + 18, static_cast<std::uint16_t>(0xC000 | get16(file, page + 16)));
}

template<std::uint32_t Page>
void markFree(ByteVector& file)
{
    setBit(file, kFreeMapRow + 5, Page);
}

const StrangeMap kStrangeMaps[] = {
    {"startsLate", [](ByteVector& file) { put32(file, kFreeMapRow + 1, 8); },
     "page 0 is in use and marked as free"},
    {"header", markFree<0>, "page 0 is in use and marked as free"},
    {"maps", markFree<1>, "page 1 is in use"},
    {"catalog", markFree<2>, "page 2 is in use"},
    {"definition", markFree<16>, "page 16 is in use"},
    {"tableMaps", markFree<17>, "page 17 is in use"},
    {"rows", markFree<19>, "page 19 is in use"},
    {"noBitmapPage",
     [](ByteVector& file) {
         std::fill_n(file.begin() + kFreeMapRow, 69, std::uint8_t{0});
         put8(file, kFreeMapRow, 1);
         put32(file, kFreeMapRow + 1, 18);
     },
     "the list of a table's pages cannot be read"},
    {"unknownType", [](ByteVector& file) { put8(file, kFreeMapRow, 2); }, "cannot be read"},
    {"deletedGlobalMap", [](ByteVector& file) { addDeletedSlot(file, kPageSize); },
     "in a way that this program"},
    {"deletedTableMap", [](ByteVector& file) { addDeletedSlot(file, kTableMaps); },
     "in a way that this program"},
    {"mapsAmongRows", [](ByteVector& file) { put32(file, kTableMaps + 4, 16); },
     "in a way that this program"},
};

class StrangeMaps : public ::testing::TestWithParam<StrangeMap> {};

TEST_P(StrangeMaps, AreReadAndNeverWritten)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 500);
    auto& file = disk.files[kPath.string()];
    GetParam().change(file);
    const ByteVector before = file;
    {
        MemoryFiles files(disk);
        auto opened = OpenDatabase(kPath, {.files = &files});
        ASSERT_TRUE(opened) << opened.error();
        auto rows = opened->OpenRecordset("data");
        ASSERT_TRUE(rows) << rows.error();
        EXPECT_EQ(rows->RecordCount(), 500);
        const auto refused = addRow(*rows, 1);
        ASSERT_FALSE(refused);
        EXPECT_THAT(refused.error(), HasSubstr(GetParam().reason));
    }
    EXPECT_EQ(file, before);
}

INSTANTIATE_TEST_SUITE_P(Maps, StrangeMaps, ::testing::ValuesIn(kStrangeMaps),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace quorvel::jet::testing
