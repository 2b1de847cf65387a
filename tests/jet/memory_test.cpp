#include "jet/fixture.h"
#include "jet/jet3_file.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

/// Bytes that the program has allocated, and the most since it was last asked.
std::atomic<std::size_t> allocated{0};
std::atomic<std::size_t> peak{0};

} // namespace

void* operator new(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    const auto now = allocated += ::malloc_usable_size(memory);
    if (now > peak) peak = now;
    return memory;
}

void operator delete(void* memory) noexcept
{
    allocated -= ::malloc_usable_size(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }

/// No file makes the program use more memory than 64 MB and four times its own length.
namespace quorvel::jet::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::uint32_t kLongValues = 0x4C41564C;

ByteVector longField(std::uint32_t length, std::uint32_t pointer)
{
    ByteVector field;
    append32(field, length);
    append32(field, pointer);
    append32(field, 0);
    return field;
}

/// A Jet 3 file with one table "Alt" on these pages. Behind them lies a page with a long value of any length: its one
/// piece leads to itself.
class CraftedFile {
public:
    CraftedFile(const std::vector<Column3>& columns, std::uint16_t variable,
                std::vector<ByteVector> dataPages)
        : endlessPage(static_cast<std::uint32_t>(6 + dataPages.size()))
    {
        std::vector<std::uint32_t> owned;
        for (std::uint32_t page = 6; page < endlessPage; ++page)
            owned.push_back(page);
        ByteVector piece(1900, 'x');
        put32(piece, 0, rowPointer(endlessPage, 0));
        dataPages.push_back(dataPage3(kLongValues, {piece}));
        for (const auto& page :
             {header3(), dataPage3(1, {map3({}), map3({})}), definition3(kCatalog, 2, 2, 3, 0x53),
              dataPage3(0, {map3({4}), map3({}), map3(owned), map3({})}),
              dataPage3(2, {catalogRow(2, "MSysObjects"), catalogRow(5, "Alt")}),
              definition3(columns, variable, 0, 3, 0x4E)})
            appendBytes(bytes, page);
        for (const auto& page : dataPages)
            appendBytes(bytes, page);
        put32(bytes, 5 * kPageSize3 + 0x23, rowPointer(3, 2));
        put32(bytes, 5 * kPageSize3 + 0x27, rowPointer(3, 3));
    }

    ByteVector catalogRow(std::uint32_t id, const std::string& name) const
    {
        ByteVector fixed;
        append32(fixed, id);
        append16(fixed, 1);
        append32(fixed, 0);
        // Properties of the object, which nobody asks for.
        return row3(5, fixed, {ansi(name), longField(1U << 20U, rowPointer(9999, 0))}, {0, 1, 2, 3, 4});
    }

    ByteVector bytes;
    std::uint32_t endlessPage;

private:
    const std::vector<Column3> kCatalog = {{"Flags", 4, true, 3, 0, 6, 4},
                                           {"Id", 4, true, 0, 0, 0, 4},
                                           {"Name", 10, false, 1, 0, 0, 255},
                                           {"Properties", 12, false, 4, 1, 0, 0},
                                           {"Type", 3, true, 2, 1, 4, 2}};
};

/// `count` memo columns that all show the same bytes of a row.
std::vector<Column3> memos(std::uint16_t count)
{
    std::vector<Column3> columns;
    for (std::uint16_t i = 0; i < count; ++i)
        columns.push_back({"M" + std::to_string(i), 12, false, i, 0, 0, 0});
    return columns;
}

/// A row of `columns` memos of this length, which lie on page `page`.
ByteVector memoRow(std::uint16_t columns, std::uint32_t length, std::uint32_t page)
{
    std::vector<int> present;
    for (int i = 0; i < columns; ++i)
        present.push_back(i);
    return row3(columns, {}, {longField(length, rowPointer(page, 0))}, present);
}

class Memory : public ::testing::Test {
protected:
    /// Opens the file, its table with `query`, and reads all rows. @return why that failed the last time.
    std::string readAll(const ByteVector& file, const std::string& query = "Alt")
    {
        Disk disk;
        disk.files[kPath.string()] = file;
        MemoryFiles files(disk);
        const std::size_t before = allocated;
        peak = before;
        const auto reason = read(files, query);
        EXPECT_LE(peak - before, (std::size_t{64} << 20U) + 4 * file.size());
        return reason;
    }

private:
    static std::string read(Files& files, const std::string& query)
    {
        auto opened = OpenDatabase(kPath, {.access = Access::ReadOnly, .files = &files});
        if (!opened) return opened.error();
        auto rows = opened->OpenRecordset(query);
        if (!rows) return rows.error();
        std::string reason;
        for (auto done = rows->MoveFirst(); !rows->Eof(); done = rows->MoveNext()) {
            if (!done) reason = done.error();
        }
        return reason;
    }
};

TEST_F(Memory, OfTheCatalogOnlyTheColumnsInUseAreRead)
{
    const CraftedFile file(memos(1), 1, {dataPage3(5, {})});
    EXPECT_EQ(readAll(file.bytes), "");
}

constexpr auto kTooLong =
    "t.mdb holds texts of more than 1 MB in a field or 2 MB in a row, which are not read. Shorten "
    "them in Access.";

/// A table with one row of `columns` memos, all of which claim this length and lead to the same text of 1 MB.
ByteVector fileOfLongTexts(std::uint16_t columns, std::uint32_t length)
{
    constexpr std::uint32_t kFirst = 8;
    constexpr std::uint32_t kPieces = 560; // of 1896 bytes, each leading to the next
    CraftedFile file(memos(columns), 1, {dataPage3(5, {memoRow(columns, length, kFirst)})});
    for (std::uint32_t i = 0; i < kPieces; ++i) {
        ByteVector piece(1900, 'x');
        put32(piece, 0, i + 1 == kPieces ? 0 : rowPointer(kFirst + i + 1, 0));
        appendBytes(file.bytes, dataPage3(kLongValues, {piece}));
    }
    return file.bytes;
}

TEST_F(Memory, ATextOfOneMegabyteIsReadAndNoLongerOne)
{
    EXPECT_EQ(readAll(fileOfLongTexts(1, 1048576)), "");
    EXPECT_EQ(readAll(fileOfLongTexts(1, 1048577)), kTooLong);
    EXPECT_EQ(readAll(fileOfLongTexts(1, 0x3FFFFFFF)), kTooLong);
}

TEST_F(Memory, TextsOfARowMayShareTheirBytesButNotAddUpToMoreThanTwoMegabytes)
{
    EXPECT_EQ(readAll(fileOfLongTexts(2, 1048576)), "");
    EXPECT_EQ(readAll(fileOfLongTexts(3, 1048576)), kTooLong);
    EXPECT_EQ(readAll(fileOfLongTexts(90, 1048576)), kTooLong);
}

/// A bitmap page that lists every page of its range.
ByteVector fullBitmap()
{
    ByteVector page(kPageSize3, 0xFF);
    put32(page, 0, 0x0105);
    return page;
}

TEST_F(Memory, AListOfPagesEndsWithTheFile)
{
    CraftedFile file(memos(1), 1, {dataPage3(5, {})});
    const auto bitmap = static_cast<std::uint32_t>(file.bytes.size() / kPageSize3);
    appendBytes(file.bytes, fullBitmap());
    ByteVector references(1 + 4 * 450);
    references[0] = 1;
    for (std::size_t i = 0; i < 450; ++i)
        put32(references, 1 + 4 * i, bitmap);
    const auto maps = dataPage3(0, {map3({4}), references});
    std::copy(maps.begin(), maps.end(), file.bytes.begin() + 3 * kPageSize3);
    put32(file.bytes, 5 * kPageSize3 + 0x23, rowPointer(3, 1));
    EXPECT_THAT(readAll(file.bytes),
                StartsWith("t.mdb is cut off: it ends at page 9, a table goes on to page 9."));
}

TEST_F(Memory, RowsThatLeadToOneLongNameAreNoCatalog)
{
    CraftedFile file(memos(1), 1, {dataPage3(5, {})});
    const auto at = static_cast<std::uint32_t>(file.bytes.size() / kPageSize3);
    appendBytes(file.bytes, dataPage3(2, {file.catalogRow(7, std::string(1500, 'n'))}, {0x8000}));
    // 255 rows on each of 600 pages lead to it: six bytes each.
    ByteVector lead(4);
    put32(lead, 0, rowPointer(at, 0));
    const auto leads =
        dataPage3(2, std::vector<ByteVector>(255, lead), std::vector<std::uint16_t>(255, 0x4000));
    std::vector<std::uint32_t> owned{4};
    for (std::uint32_t i = 0; i < 600; ++i) {
        appendBytes(file.bytes, leads);
        owned.push_back(at + 1 + i);
    }
    const auto maps = dataPage3(0, {map3(owned), map3({}), map3({6}), map3({})});
    std::copy(maps.begin(), maps.end(), file.bytes.begin() + 3 * kPageSize3);
    EXPECT_THAT(readAll(file.bytes), HasSubstr("it does not list its tables"));
}

TEST_F(Memory, SortingByLongTextsKeepsOnlyTheirBeginnings)
{
    std::vector<ByteVector> pages;
    const std::uint32_t longPage = 6 + 200;
    for (int i = 0; i < 200; ++i)
        pages.push_back(dataPage3(5, std::vector<ByteVector>(80, memoRow(1, 1890, longPage))));
    EXPECT_EQ(readAll(CraftedFile(memos(1), 1, pages).bytes, "select * from Alt order by M0"), "");
    const auto wide = dataPage3(5, std::vector<ByteVector>(200, ByteVector(1)));
    EXPECT_EQ(
        readAll(CraftedFile(memos(1), 1, std::vector<ByteVector>(900, wide)).bytes,
                "select * from Alt order by M0"),
        "t.mdb is damaged: a row of the table cannot be read. Use \"Compact and Repair\" in Access, or an "
        "earlier copy.");
}

/// A file that runs out of memory while its pages are read or written.
class FileWithoutMemory : public MemoryFile {
public:
    FileWithoutMemory(Disk& disk, const bool& spent) : MemoryFile(disk, kPath.string()), spent_(&spent) {}
    Status readPage(std::uint32_t number, MutableBytes page) override
    {
        if (*spent_) throw std::bad_alloc();
        return MemoryFile::readPage(number, page);
    }
    Status writePage(std::uint32_t number, Bytes page) override
    {
        if (*spent_) throw std::bad_alloc();
        return MemoryFile::writePage(number, page);
    }

private:
    const bool* spent_;
};

class FilesWithoutMemory : public MemoryFiles {
public:
    FilesWithoutMemory(Disk& disk, const bool& spent) : MemoryFiles(disk), disk_(&disk), spent_(&spent) {}
    Result<Opened> open(const std::filesystem::path&, bool) override
    {
        return Opened{std::make_unique<FileWithoutMemory>(*disk_, *spent_), ""};
    }

private:
    Disk* disk_;
    const bool* spent_;
};

void expectNoMemory(const std::string& call, bool done, const std::string& reason)
{
    EXPECT_FALSE(done) << call;
    EXPECT_EQ(reason, "t.mdb needs more memory than there is. Close other programs and try again.") << call;
}

TEST(NoMemory, IsAReasonLikeAnyOther)
{
    Disk disk;
    makeFile(disk);
    fill(disk, 0, 500);
    bool spent = true;
    FilesWithoutMemory files(disk, spent);
    const auto refused = OpenDatabase(kPath, {.files = &files});
    expectNoMemory("OpenDatabase", static_cast<bool>(refused), refused ? "" : refused.error());
    spent = false;
    auto opened = OpenDatabase(kPath, {.files = &files});
    ASSERT_TRUE(opened) << opened.error();
    spent = true;
    const auto fields = opened->Fields("data");
    expectNoMemory("Fields", static_cast<bool>(fields), fields ? "" : fields.error());
    const auto noRows = opened->OpenRecordset("data");
    expectNoMemory("OpenRecordset", static_cast<bool>(noRows), noRows ? "" : noRows.error());
    spent = false;
    auto rows = opened->OpenRecordset("data");
    ASSERT_TRUE(rows) << rows.error();
    spent = true;
    const auto added = addRow(*rows, 500);
    expectNoMemory("Update", static_cast<bool>(added), added ? "" : added.error());
    const auto erased = rows->Delete();
    expectNoMemory("Delete", static_cast<bool>(erased), erased ? "" : erased.error());
    spent = false;
    EXPECT_TRUE(addRow(*rows, 500));
    EXPECT_TRUE(opened->Close());
    EXPECT_EQ(valuesOf(disk), countTo(501));
    EXPECT_THAT(faultsOf(disk.files[kPath.string()]), ::testing::IsEmpty());
}

} // namespace
} // namespace quorvel::jet::testing
