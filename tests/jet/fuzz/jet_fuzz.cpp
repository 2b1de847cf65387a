#include "jet/jet3_file.h"
#include "jet/memory_file.h"
#include "jet/store.h"

#include <cstdlib>

/// Opens what it is given as a database file, reads every table in its own order and by its columns, adds rows until
/// another page is begun, changes and deletes.
///
/// First byte of the input: which sound file the rest changes: 0 a Jet 4 file whose maps have to turn into bitmap
/// pages with the next page, 1 a small Jet 4 file, 2 a Jet 3 file. Four bytes make a change: page, offset (u16), new
/// byte. Files are long and mostly zero, changes get to the point.
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

std::vector<std::uint8_t> fileOf(const std::uint8_t* data, std::size_t size)
{
    static const std::vector<std::uint8_t> sound[] = {jet4WithFullMaps(), soundJet4(), jet3File()};
    if (size == 0) return {};
    const bool old = data[0] % 3 == 2;
    auto file = sound[data[0] % 3];
    const std::size_t pageSize = old ? kPageSize3 : kPageSize;
    for (std::size_t at = 1; at + 4 <= size; at += 4) {
        const std::size_t page = data[at] % (file.size() / pageSize);
        file[page * pageSize + (data[at + 1] | data[at + 2] << 8) % pageSize] = data[at + 3];
    }
    return file;
}

void readAll(Recordset& rows)
{
    std::size_t letters = 0;
    auto read = rows.MoveFirst();
    for (int count = 0; !rows.Eof() && count < 2000; ++count) {
        for (int i = 0; i < rows.FieldCount(); ++i)
            letters += rows.Fields(i).Value().text().size();
        read = rows.MoveNext();
    }
    if (letters == 1) std::abort(); // never: keeps the reading from being optimised away
}

template<class Outcome>
void ignore(const Outcome& outcome)
{
    if (!outcome && outcome.error().empty()) std::abort();
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
