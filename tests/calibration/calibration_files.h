#pragma once

#include "calibration/database.h"
#include "calibration/datacontrol.h"
#include "calibration/direction.h"
#include "jet/bytes.h"
#include "jet/database.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// What the tests of calibration files share.
namespace quorvel::calibration {

/// A folder of the test's own.
class FolderOfFiles : public ::testing::Test {
protected:
    std::filesystem::path at(const char* name) const { return folder_.path().toStdString() + "/" + name; }

    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path().toStdString())) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    QTemporaryDir folder_;
};

inline std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void put(const std::filesystem::path& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

/// Makes the calibration file of a direction, with a number in each cell.
inline void makeFilledFile(const std::filesystem::path& folder, const DirectionRow& direction)
{
    const auto path = folder / direction.file;
    ASSERT_TRUE(CreateCalibrationDatabase(path));
    DataControl file;
    file.setDatabaseName(path);
    ASSERT_TRUE(file.Refresh());
    for (int row = 0; row < file.rowCount(); ++row) {
        Records::Changes changes{{std::string(kDialName), double(row)}};
        for (const auto& reading : direction.readings) {
            changes[std::string(reading.name)] = double(row);
        }
        ASSERT_TRUE(file.write(row, changes));
    }
}

/// A row of cells as text, Null as "-".
inline std::vector<std::string> rowsOf(const std::filesystem::path& path)
{
    std::vector<std::string> texts;
    auto database = jet::OpenDatabase(path, {.access = jet::Access::ReadOnly});
    EXPECT_TRUE(database) << database.error();
    if (!database) return texts;
    auto rows = database->OpenRecordset(kRecordSource);
    EXPECT_TRUE(rows) << rows.error();
    if (!rows) return texts;
    for (auto moved = rows->MoveFirst(); moved && !rows->Eof(); moved = rows->MoveNext()) {
        std::string text;
        for (int field = 0; field < rows->FieldCount(); ++field) {
            const auto& value = rows->Fields(field).Value();
            text += (field == 0 ? "" : " ") + (value.isNull() ? "-" : value.text());
        }
        texts.push_back(text);
    }
    return texts;
}

/// A calibration file with these columns and one row of `value` for each of `numbers`.
inline void makeFile(const std::filesystem::path& path, const std::vector<jet::FieldDef>& fields,
                     const std::vector<int>& numbers, double value)
{
    auto made = jet::CreateDatabase(path, jet::kGeneralLocale);
    ASSERT_TRUE(made) << made.error();
    auto table = jet::Database::CreateTableDef("Calibration");
    for (const auto& field : fields) {
        table.Append(field);
    }
    auto done = made->Append(table);
    ASSERT_TRUE(done) << done.error();
    auto rows = made->OpenRecordset("Calibration");
    ASSERT_TRUE(rows) << rows.error();
    for (const int number : numbers) {
        rows->AddNew();
        rows->Fields(0).SetValue(number);
        for (int field = 1; field < rows->FieldCount(); ++field) {
            if (rows->Fields(field).Type() != jet::FieldType::Date) rows->Fields(field).SetValue(value);
        }
        done = rows->Update();
        ASSERT_TRUE(done) << done.error();
    }
    done = made->Close();
    ASSERT_TRUE(done) << done.error();
}

/// Adds an index to the one table of a file of ours, as a key set in another program does: a block of counts in front of
/// the columns, and one of the index behind their names.
inline void addIndex(const std::filesystem::path& path)
{
    constexpr std::ptrdiff_t kPage = 4096;
    constexpr std::ptrdiff_t kDefinition = 16 * kPage; // the page after those of a new file
    constexpr std::ptrdiff_t kCounts = 12;
    constexpr std::ptrdiff_t kIndex = 52;
    const auto content = contentOf(path);
    jet::ByteVector file(content.begin(), content.end());
    ASSERT_EQ(file.at(kDefinition), 2) << "a table begins here";
    const std::ptrdiff_t end = jet::get32(file, kDefinition + 8);
    jet::put32(file, kDefinition + 0x33, 1);
    file.insert(file.begin() + kDefinition + end - 2, kIndex, std::uint8_t{0});
    file.insert(file.begin() + kDefinition + 0x3F, kCounts, std::uint8_t{0});
    const auto next = file.begin() + kDefinition + kPage;
    file.erase(next, next + kCounts + kIndex);
    jet::put32(file, kDefinition + 8, static_cast<std::uint32_t>(end + kCounts + kIndex));
    put(path, {file.begin(), file.end()});
}

/// Adds a column of Singles behind the columns of a file of ours, as another program does: the rows that are there stay
/// as they are, without it.
inline void addColumn(const std::filesystem::path& path, const std::string& name)
{
    constexpr std::size_t kDefinition = std::size_t{16} * 4096;
    const auto content = contentOf(path);
    jet::ByteVector page(content.begin() + kDefinition, content.begin() + kDefinition + 4096);
    const std::uint16_t columns = jet::get16(page, 0x2D);
    const std::size_t names = 0x3F + std::size_t{25} * columns;
    const auto before = std::vector<std::uint8_t>(page.begin() + static_cast<std::ptrdiff_t>(names - 25),
                                                  page.begin() + static_cast<std::ptrdiff_t>(names));
    auto block = before;
    jet::put8(block, 0, 6);
    jet::put16(block, 5, columns);
    jet::put16(block, 9, columns);
    jet::put16(block, 21, static_cast<std::uint16_t>(jet::get16(before, 21) + jet::get16(before, 23)));
    jet::put16(block, 23, 4);
    jet::ByteVector stored;
    jet::append16(stored, static_cast<std::uint16_t>(2 * name.size()));
    for (const char letter : name)
        jet::append16(stored, static_cast<std::uint8_t>(letter));
    const std::size_t end = jet::get32(page, 8) - 2;
    page.insert(page.begin() + static_cast<std::ptrdiff_t>(end), stored.begin(), stored.end());
    page.insert(page.begin() + static_cast<std::ptrdiff_t>(names), block.begin(), block.end());
    page.resize(4096);
    jet::put16(page, 0x29, static_cast<std::uint16_t>(columns + 1));
    jet::put16(page, 0x2D, static_cast<std::uint16_t>(columns + 1));
    jet::put32(page, 8, static_cast<std::uint32_t>(end + 2 + stored.size() + block.size()));
    put(path, content.substr(0, kDefinition) + std::string(page.begin(), page.end()) +
                  content.substr(kDefinition + 4096));
}

inline std::vector<jet::FieldDef> columnsOf(const std::vector<std::string>& readings)
{
    std::vector<jet::FieldDef> fields{{"SN", jet::FieldType::Integer}, {"Rule_Data", jet::FieldType::Single}};
    for (const auto& name : readings) {
        fields.push_back({name, jet::FieldType::Single});
    }
    return fields;
}

} // namespace quorvel::calibration
