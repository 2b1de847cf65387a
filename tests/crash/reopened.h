#pragma once

#include "autoread/exported.h"
#include "crash/recording.h"
#include "jet/checker.h"
#include "jet/database.h"

#include <gmock/gmock.h>

/// What a reader finds in a file that a crash left.
namespace quorvel::test {

inline constexpr int kSeldom = 25; ///< every so many wrecks are shown to mdbtools

/// The rows of a table as our reader finds them, "-" for Null. A file that does not open, or of which rows cannot be
/// read or are missing, fails the test.
inline std::vector<std::string> tableRows(const std::filesystem::path& path, std::string_view table,
                                          jet::Access access = jet::Access::ReadOnly)
{
    std::vector<std::string> found;
    auto opened = jet::OpenDatabase(path, {.access = access});
    EXPECT_TRUE(opened) << opened.error();
    if (!opened) return found;
    auto fields = opened->Fields(table);
    auto rows = opened->OpenRecordset(table);
    EXPECT_TRUE(rows) << rows.error();
    if (!fields || !rows) return found;
    const auto complete = rows->Complete();
    EXPECT_TRUE(complete) << complete.error();
    auto moved = rows->MoveFirst();
    for (; moved && !rows->Eof(); moved = rows->MoveNext()) {
        std::string row;
        for (const auto& field : *fields) {
            const auto value = rows->Fields(field.name).Value();
            row += (row.empty() ? "" : ",") + (value.isNull() ? std::string("-") : value.text());
        }
        found.push_back(row);
    }
    EXPECT_TRUE(moved) << moved.error();
    const auto closed = opened->Close();
    EXPECT_TRUE(closed) << closed.error();
    return found;
}

/// As many rows as mdbtools find.
inline std::size_t countedByOthers(const std::filesystem::path& path, const char* table)
{
    const auto text =
        printed(QStringLiteral("mdb-export"),
                {QStringLiteral("-H"), QString::fromStdString(path.string()), QString::fromLatin1(table)});
    return static_cast<std::size_t>(text.count('\n'));
}

/// Our reader, mdbtools for some, and a look at every page agree that a file is sound. @return its rows.
inline std::vector<std::string> soundRows(const Wreck& wreck, const std::string& name, const char* table)
{
    const auto path = wreck.folder / name;
    auto rows = tableRows(path, table);
    if (wreck.sampled(kSeldom)) {
        EXPECT_EQ(countedByOthers(path, table), rows.size());
    }
    // a count that is off is put right by the next opening for writing
    EXPECT_EQ(tableRows(path, table, jet::Access::ReadWrite), rows);
    EXPECT_THAT(jet::testing::faultsOfFile(path.string()), ::testing::IsEmpty());
    return rows;
}

/// The first `count` of some rows.
inline std::vector<std::string> first(std::size_t count, const std::vector<std::string>& rows)
{
    return {rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(std::min(count, rows.size()))};
}

/// The number in front of these words where they were said last; 0 when they were not.
inline int numberBefore(const std::vector<std::string>& said, const std::string& words)
{
    for (auto line = said.rbegin(); line != said.rend(); ++line) {
        const auto end = line->find(words);
        if (end == std::string::npos) continue;
        return std::stoi(line->substr(line->rfind(' ', end - 1) + 1));
    }
    return 0;
}

} // namespace quorvel::test
