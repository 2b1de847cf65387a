#pragma once

#include "jet/checker.h"
#include "jet/database.h"
#include "jet/memory_file.h"
#include "support/fresh_folder.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

/// What the tests of database files share.
namespace quorvel::jet::testing {

inline const std::filesystem::path kPath = "t.mdb";

inline TableDef tableOf(std::string name, const std::vector<FieldDef>& fields)
{
    TableDef table(std::move(name));
    for (const auto& field : fields)
        table.Append(field);
    return table;
}

/// "data" with Date/Time and two Singles: 21 bytes a row, 194 rows on a page.
inline TableDef readings()
{
    return tableOf("data", {{"time", FieldType::Date}, {"x", FieldType::Single}, {"y", FieldType::Single}});
}

/// A new file with one table and no rows.
inline void makeFile(Disk& disk, const TableDef& table = readings())
{
    MemoryFiles files(disk);
    auto made = CreateDatabase(kPath, kGeneralLocale, &files);
    ASSERT_TRUE(made) << made.error();
    const auto appended = made->Append(table);
    ASSERT_TRUE(appended) << appended.error();
    const auto closed = made->Close();
    ASSERT_TRUE(closed) << closed.error();
}

/// Adds a row with x = `x`. @return the outcome of Update().
inline Status addRow(Recordset& rows, double x)
{
    rows.AddNew();
    rows.Fields("x").SetValue(x);
    return rows.Update();
}

/// Appends rows x = first .. last-1 and closes.
inline void fill(Disk& disk, int first, int last)
{
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    ASSERT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("data");
    ASSERT_TRUE(rows) << rows.error();
    for (int x = first; x < last; ++x) {
        const auto done = addRow(*rows, x);
        ASSERT_TRUE(done) << done.error();
    }
    const auto closed = opened->Close();
    ASSERT_TRUE(closed) << closed.error();
}

/// The x of every row.
inline std::vector<double> valuesOf(Disk& disk, Access access = Access::ReadOnly)
{
    std::vector<double> values;
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.access = access, .files = &files});
    EXPECT_TRUE(opened) << opened.error();
    if (!opened) return values;
    auto rows = opened->OpenRecordset("data");
    EXPECT_TRUE(rows) << rows.error();
    if (!rows) return values;
    for (auto read = rows->MoveFirst(); !rows->Eof(); read = rows->MoveNext()) {
        EXPECT_TRUE(read) << read.error();
        values.push_back(rows->Fields("x").Value().number().value_or(-1e9));
    }
    const auto closed = opened->Close();
    EXPECT_TRUE(closed) << closed.error();
    return values;
}

inline std::vector<double> countTo(int last)
{
    std::vector<double> values;
    for (int x = 0; x < last; ++x)
        values.push_back(x);
    return values;
}

/// A folder that goes with the test.
class Folder {
public:
    Folder() : path_(test::freshFolder()) {}
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(path_); }

    std::filesystem::path operator/(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

/// Pages of zeros become holes of the file: some files are long and nearly empty.
inline void save(const std::vector<std::uint8_t>& bytes, const std::filesystem::path& path)
{
    {
        constexpr Page kZeros{};
        std::ofstream stream(path, std::ios::binary);
        for (std::size_t at = 0; at < bytes.size(); at += kPageSize) {
            const auto page = part(bytes, at, kPageSize);
            if (std::memcmp(page.data(), kZeros.data(), page.size()) == 0) continue;
            stream.seekp(static_cast<std::streamoff>(at));
            stream.write(reinterpret_cast<const char*>(page.data()),
                         static_cast<std::streamsize>(page.size()));
        }
        ASSERT_TRUE(stream.good());
    }
    std::filesystem::resize_file(path, bytes.size());
}

/// What opening the file and its table "data" says.
inline Status opening(Disk& disk)
{
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.files = &files});
    if (!opened) return opened.failure();
    auto rows = opened->OpenRecordset("data");
    return rows ? Status{} : Status(rows.failure());
}

} // namespace quorvel::jet::testing
