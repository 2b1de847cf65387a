#include "jet/memory_file.h"
#include "jet/query.h"
#include "jet/store.h"
#include "support/fuzz_input.h"

/// Takes any text for a query: reads it, writes it anew in its plain form and reads that again, and opens a recordset
/// of a small table with it.
namespace quorvel::jet::testing {
namespace {

using test::promised;

constexpr int kRows = 5;
const std::filesystem::path kFile = "query.mdb";

std::vector<std::uint8_t> smallFile()
{
    Disk disk;
    MemoryFiles files(disk);
    auto made = CreateDatabase(kFile, kGeneralLocale, &files);
    TableDef table("data");
    table.Append({"time", FieldType::Date});
    table.Append({"x y", FieldType::Integer});
    promised(static_cast<bool>(made->Append(table)), "a table");
    auto rows = made->OpenRecordset("data");
    for (int i = 0; i < kRows; ++i) {
        rows->AddNew();
        rows->Fields(1).SetValue(3 * i % kRows);
        promised(static_cast<bool>(rows->Update()), "a row");
    }
    promised(static_cast<bool>(made->Close()), "a file");
    return disk.files[kFile.string()];
}

std::string inPlainForm(const Query& query)
{
    auto text = "select * from [" + query.table + "]";
    for (std::size_t i = 0; i < query.order.size(); ++i) {
        text += (i == 0 ? " order by [" : ", [") + query.order[i].field + "]";
        if (query.order[i].descending) text += " desc";
    }
    return text;
}

void holdQuery(std::string_view text)
{
    const auto query = parseQuery(text);
    if (!query) return;
    promised(!query->table.empty(), "a query names a table");
    const auto again = parseQuery(inPlainForm(*query));
    promised(again && again->table == query->table && again->order.size() == query->order.size(),
             "a query in its plain form is the same");
    for (std::size_t i = 0; i < query->order.size(); ++i) {
        promised(again->order[i].field == query->order[i].field &&
                     again->order[i].descending == query->order[i].descending,
                 "so are its columns");
    }
}

void holdRecordset(const std::string& text)
{
    static const auto file = smallFile();
    Disk disk;
    disk.files[kFile.string()] = file;
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kFile, {.access = Access::ReadOnly, .files = &files});
    promised(static_cast<bool>(opened), "the file is sound");
    auto rows = opened->OpenRecordset(text);
    if (!rows) return promised(!rows.error().empty(), "a refusal has a reason");
    int count = 0;
    for (; !rows->Eof(); ++count)
        promised(static_cast<bool>(rows->MoveNext()), "the rows can be read");
    promised(count == rows->RecordCount() && rows->Complete(), "all rows are there");
}

} // namespace
} // namespace quorvel::jet::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto text = quorvel::test::FuzzInput(data, size).rest();
    quorvel::jet::testing::holdQuery(text);
    const auto bare = quorvel::jet::bareName(text);
    quorvel::test::promised(bare.size() <= text.size(), "a bare name is part of the text");
    quorvel::jet::testing::holdRecordset(text);
    return 0;
}
