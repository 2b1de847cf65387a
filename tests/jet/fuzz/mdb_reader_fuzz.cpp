#include "jet/jet3_file.h"
#include "jet/layout.h"
#include "jet/memory_file.h"
#include "jet/store.h"

#include <cstdlib>
#include <random>

/// Opens what it is given as a database file, reads every table in its own order and by its columns, adds rows until
/// another page is begun, changes and deletes.
///
/// First byte of the input: which sound file the rest changes: 0 a Jet 4 file whose maps have to turn into bitmap
/// pages with the next page, 1 a small Jet 4 file, 2 a Jet 3 file. Four bytes make a change: page, offset (u16), new
/// byte. Files are long and mostly zero, changes get to the point. The mutator knows where page types, pointers, counts,
/// offsets and lengths are.
namespace quorvel::jet::testing {
namespace {

const std::filesystem::path kFile = "fuzz.mdb";

std::vector<std::uint8_t> soundJet4()
{
    Disk disk;
    MemoryFiles files(disk);
    auto made = CreateDatabase(kFile, kGeneralLocale, &files);
    TableDef table("data");
    table.Append({"t", FieldType::Date});
    table.Append({"x", FieldType::Single});
    table.Append({"n", FieldType::Integer});
    if (!made->Append(table)) std::abort();
    auto rows = made->OpenRecordset("data");
    for (int i = 0; i < 250; ++i) {
        rows->AddNew();
        rows->Fields("n").SetValue(i);
        if (!rows->Update()) std::abort();
    }
    if (!made->Close()) std::abort();
    return disk.files[kFile.string()];
}

/// Takes all room on a page of two maps of 512 pages, so that neither can grow in place.
void fillMapPage(std::vector<std::uint8_t>& file, std::size_t page)
{
    const std::uint16_t lowest = 0x14; // behind three slots
    put16(file, page + 2, 0);
    put16(file, page + 0x0C, 3);
    put16(file, page + 0x12, lowest);
}

/// As if other tables had all pages up to 512, where the maps end.
std::vector<std::uint8_t> jet4WithFullMaps()
{
    auto file = soundJet4();
    file.resize(512 * kPageSize);
    const std::size_t freePages = kPageSize + (get16(file, kPageSize + 0x0E) & 0x1FFFU) + 5;
    std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(freePages), 64, std::uint8_t{0});
    fillMapPage(file, kPageSize);
    fillMapPage(file, 17 * kPageSize);
    return file;
}

constexpr std::size_t kChange = 4; // bytes of an input

struct SoundFile {
    std::vector<std::uint8_t> bytes;
    const Layout& layout;

    std::size_t pages() const { return bytes.size() / layout.pageSize; }
};

const SoundFile& soundFile(std::uint8_t which)
{
    static const SoundFile files[] = {{jet4WithFullMaps(), kJet4}, {soundJet4(), kJet4}, {jet3File(), kJet3}};
    return files[which % std::size(files)];
}

std::vector<std::uint8_t> fileOf(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return {};
    const auto& sound = soundFile(data[0]);
    auto file = sound.bytes;
    for (std::size_t at = 1; at + kChange <= size; at += kChange) {
        const std::size_t page = data[at] % sound.pages();
        file[page * sound.layout.pageSize + (data[at + 1] | data[at + 2] << 8) % sound.layout.pageSize] =
            data[at + 3];
    }
    return file;
}

/// A number in a page that leads somewhere: a type, a pointer, a count, an offset, a length.
struct Place {
    std::size_t page;
    std::size_t offset;
    std::size_t width;
};

void addAll(std::vector<Place>& places, std::size_t page, std::size_t width,
            std::initializer_list<std::size_t> offsets)
{
    for (const auto offset : offsets)
        places.push_back({page, offset, width});
}

void addDefinition(std::vector<Place>& places, const SoundFile& file, std::size_t page)
{
    const auto& at = file.layout;
    addAll(places, page, 1, {at.kind});
    addAll(places, page, 2, {at.maxColumns, at.variableColumns, at.columnCount});
    addAll(places, page, 4, {8, at.rowCount, at.logicalCount, at.physicalCount, at.ownedMap, at.freeMap});
    const Bytes bytes = part(file.bytes, page * at.pageSize, at.pageSize);
    const auto columns = std::min<std::size_t>(get16(bytes, at.columnCount), 20);
    const auto indexes = std::min<std::size_t>(get32(bytes, at.physicalCount), 5);
    auto block = at.blocks + indexes * at.indexRowCountSize;
    for (std::size_t i = 0; i < columns; ++i, block += at.columnSize) {
        addAll(places, page, 1, {block, block + at.columnFlags, block + at.columnPrecision});
        addAll(places, page, 2,
               {block + at.columnNumber, block + at.columnVariableIndex, block + at.columnOrdinal,
                block + at.columnFixedOffset, block + at.columnLength});
    }
    for (std::size_t i = 0; i < columns; ++i) {
        addAll(places, page, at.nameLengthSize, {block});
        block += at.nameLengthSize + (at.version == 3 ? get8(bytes, block) : get16(bytes, block));
    }
    for (std::size_t i = 0; i < indexes; ++i, block += at.physicalSize)
        for (std::size_t byte = 0; byte + 4 <= at.physicalSize; byte += 3)
            addAll(places, page, 4, {block + byte});
}

void addDataPage(std::vector<Place>& places, const SoundFile& file, std::size_t page)
{
    const auto& at = file.layout;
    const Bytes bytes = part(file.bytes, page * at.pageSize, at.pageSize);
    addAll(places, page, 2, {2, at.slotCount});
    for (std::size_t slot = 0; slot < std::min<std::size_t>(get16(bytes, at.slotCount), 30); ++slot) {
        const auto entry = at.slotTable + 2 * slot;
        const std::size_t row = get16(bytes, entry) & 0x1FFFU;
        addAll(places, page, 2, {entry, row, row + 2});
        addAll(places, page, 4, {row, row + 1, row + 4});         // a moved row, a usage map, a long value
        if (row > 4) addAll(places, page, 2, {row - 2, row - 4}); // end of the row in the slot behind
    }
}

std::vector<Place> placesOf(const SoundFile& file)
{
    std::vector<Place> places;
    addAll(places, 0, 4, {0, 4, 0x14, 0x18, 0x1C, 0x20, 0x24, 0x3C, 0x3E, 0x42});
    for (std::size_t page = 1; page < std::min<std::size_t>(file.pages(), 256); ++page) {
        const auto type = get8(file.bytes, page * file.layout.pageSize);
        addAll(places, page, 1, {0, 1});
        addAll(places, page, 4, {4});
        if (type == 1) addDataPage(places, file, page);
        if (type == 2) addDefinition(places, file, page);
        if (type == 3 || type == 4) addAll(places, page, 4, {8, 12, 16, 20, 24, 27});
    }
    return places;
}

/// Changes one number of the file to one that is not far-fetched.
class Mutator {
public:
    Mutator(std::uint8_t which, unsigned seed) : which_(which), file_(soundFile(which)), random_(seed) {}

    void append(std::vector<std::uint8_t>& input)
    {
        static const std::vector<Place> kPlaces[] = {placesOf(soundFile(0)), placesOf(soundFile(1)),
                                                     placesOf(soundFile(2))};
        const auto& places = kPlaces[which_ % std::size(kPlaces)];
        const auto& place = places[below(places.size())];
        const auto number = numberFor(place);
        for (std::size_t i = 0; i < place.width; ++i) {
            const auto offset = place.offset + i;
            for (const auto byte : {place.page, offset, offset >> 8, std::size_t{number} >> (8 * i)})
                input.push_back(static_cast<std::uint8_t>(byte));
        }
    }

private:
    std::size_t below(std::size_t count) { return random_() % count; }

    std::uint32_t numberFor(const Place& place)
    {
        const auto held = get32(file_.bytes, place.page * file_.layout.pageSize + place.offset);
        const auto page = static_cast<std::uint32_t>(below(file_.pages()));
        const auto here = static_cast<std::uint32_t>(place.page);
        const auto last = static_cast<std::uint32_t>(file_.pages());
        const std::uint32_t numbers[] = {0,
                                         1,
                                         static_cast<std::uint32_t>(below(10)),
                                         held + 1,
                                         held - 1,
                                         held ^ 0x4000U,
                                         held ^ 0x8000U,
                                         held ^ 0xC000U,
                                         0xFFFFFFFF,
                                         0x7FFFFFFF,
                                         static_cast<std::uint32_t>(below(file_.layout.pageSize)),
                                         page,
                                         here,
                                         last,
                                         page << 8U | static_cast<std::uint32_t>(below(4)),
                                         here << 8U | static_cast<std::uint32_t>(below(4)),
                                         static_cast<std::uint32_t>(random_())};
        return numbers[below(std::size(numbers))];
    }

    std::uint8_t which_;
    const SoundFile& file_;
    std::minstd_rand random_;
};

/// A refusal has a reason.
template<class Outcome>
void ignore(const Outcome& outcome)
{
    if (!outcome && outcome.error().empty()) std::abort();
}

void readAll(Recordset& rows)
{
    ignore(rows.MoveFirst());
    for (int count = 0; !rows.Eof() && count < 2000; ++count) {
        for (int i = 0; i < rows.FieldCount(); ++i)
            static_cast<void>(rows.Fields(i).Value().text());
        ignore(rows.MoveNext());
    }
}

Value valueFor(FieldType type, int number)
{
    if (type == FieldType::Date) return Date{number + 0.25};
    return number;
}

void mustHold(bool condition)
{
    if (!condition) std::abort();
}

/// Rows that can be written are written, found again and counted.
void writeSome(Recordset& rows)
{
    if (!rows.Updatable()) return;
    for (int number = 0; number < 220; ++number) {
        rows.AddNew();
        for (int i = 0; i < rows.FieldCount(); ++i)
            rows.Fields(i).SetValue(valueFor(rows.Fields(i).Type(), number));
        const int before = rows.RecordCount();
        const auto added = rows.Update();
        ignore(added);
        mustHold(rows.RecordCount() == before + (added ? 1 : 0));
        if (!added) return;
    }
    mustHold(static_cast<bool>(rows.SetBookmark(rows.LastModified())));
    rows.Edit();
    rows.Fields(0).SetValue(kNull);
    mustHold(static_cast<bool>(rows.Update()));
    mustHold(static_cast<bool>(rows.SetBookmark(rows.LastModified())));
    mustHold(rows.Fields(0).Value().isNull());
    mustHold(static_cast<bool>(rows.Delete()));
    ignore(rows.MoveFirst());
    ignore(rows.Delete());
}

/// The table by its first columns, up and down.
std::string inOrder(Database& database, const std::string& table)
{
    std::string query = "select * from [" + table + "]";
    const auto fields = database.Fields(table);
    ignore(fields);
    for (std::size_t i = 0; fields && i < fields->size() && i < 3; ++i)
        query += (i == 0 ? " order by [" : " desc, [") + (*fields)[i].name + "]";
    return query;
}

void openAll(Disk& disk, Access access)
{
    MemoryFiles files(disk);
    const auto durability = access == Access::ReadWrite ? Durability::EachUpdate : Durability::AtClose;
    auto opened = OpenDatabase(kFile, {.access = access, .durability = durability, .files = &files});
    ignore(opened);
    if (!opened) return;
    const auto tables = opened->Tables();
    for (std::size_t i = 0; i < tables->size() && i < 20; ++i) {
        const auto& name = (*tables)[i].name;
        auto rows = opened->OpenRecordset(access == Access::ReadOnly ? inOrder(*opened, name) : name);
        ignore(rows);
        if (!rows) continue;
        readAll(*rows);
        writeSome(*rows);
    }
    ignore(opened->Close());
}

} // namespace
} // namespace quorvel::jet::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel::jet;
    testing::Disk disk;
    disk.files[testing::kFile.string()] = testing::fileOf(data, size);
    testing::openAll(disk, Access::ReadOnly);
    testing::openAll(disk, Access::ReadWrite);
    testing::openAll(disk, Access::ReadOnly);
    return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed)
{
    using quorvel::jet::testing::Mutator;
    constexpr std::size_t kRoom = 16; // for the longest change
    const bool anyhow = seed % 4 == 0;
    if (size == 0 || size + kRoom > most || anyhow) return LLVMFuzzerMutate(data, size, most);
    std::vector<std::uint8_t> input(data, data + size);
    input.resize(1 + (size - 1) / 4 * 4);
    if (input.size() > 1 && seed % 7 == 0) input.resize(input.size() - 4);
    Mutator(input[0], seed).append(input);
    std::copy(input.begin(), input.end(), data);
    return input.size();
}
