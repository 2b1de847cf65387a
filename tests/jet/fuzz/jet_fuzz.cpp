#include "jet/jet3_file.h"
#include "jet/memory_file.h"
#include "jet/store.h"

#include <cstdlib>

/// Opens what it is given as a database file, reads every table, and tries to add, change and delete a row.
///
/// First byte of the input: 0 the rest is a file; 1 and 2 the rest are changes to a sound Jet 4 or Jet 3 file, four
/// bytes each: page, offset (u16), new byte. Files are long and mostly zero, changes get to the point.
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

std::vector<std::uint8_t> fileOf(const std::uint8_t* data, std::size_t size)
{
    static const auto jet4 = soundJet4();
    static const auto jet3 = jet3File();
    if (size == 0) return {};
    if (data[0] % 3 == 0) return {data + 1, data + size};
    const bool old = data[0] % 3 == 2;
    auto file = old ? jet3 : jet4;
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

void writeSome(Recordset& rows)
{
    if (!rows.Updatable()) return;
    rows.AddNew();
    rows.Fields(0).SetValue(3);
    ignore(rows.Update());
    ignore(rows.SetBookmark(rows.LastModified()));
    rows.Edit();
    rows.Fields(1).SetValue(kNull);
    ignore(rows.Update());
    ignore(rows.MoveFirst());
    ignore(rows.Delete());
}

void openAll(Disk& disk, Access access)
{
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kFile, {.access = access, .files = &files});
    ignore(opened);
    if (!opened) return;
    const auto tables = opened->Tables();
    for (std::size_t i = 0; i < tables->size() && i < 20; ++i) {
        auto rows = opened->OpenRecordset((*tables)[i].name);
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
