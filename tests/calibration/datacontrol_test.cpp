#include "calibration/datacontrol.h"

#include "autoread/largest_file.h"
#include "calibration/calibration_files.h"
#include "calibration/older_file.h"

#include <cstdio>
#include <fcntl.h>
#include <functional>

namespace {

/// Done before a file gets its name.
std::function<void(const std::filesystem::path& to)> atRename;

} // namespace

extern "C" int rename(const char* from, const char* to) noexcept
{
    const auto before = std::exchange(atRename, nullptr);
    if (before) before(to);
    return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace quorvel::calibration {
namespace {

using Names = std::vector<std::string>;

class Data : public FolderOfFiles {
protected:
    Data() { data.setDatabaseName(at("XDirection.mdb")); }

    void create() { ASSERT_TRUE(CreateCalibrationDatabase(at("XDirection.mdb"))); }
    void refresh()
    {
        const auto refreshed = data.Refresh();
        ASSERT_TRUE(refreshed) << refreshed.error();
    }

    DataControl data;
};

TEST_F(Data, ListsTheRowsByTheirNumbers)
{
    makeFile(at("XDirection.mdb"), columnsOf({"X_Data"}), {2, 0, 1}, 0.5);
    refresh();
    ASSERT_EQ(data.rowCount(), 3);
    EXPECT_EQ(data.value(0, 0).text(), "0");
    EXPECT_EQ(data.value(2, 0).text(), "2");
    EXPECT_EQ(data.fields()[2].name, "X_Data");
}

TEST_F(Data, WritesToTheFileAtOnce)
{
    create();
    refresh();
    const auto written = data.write(3, {{"Rule_Data", 0.25}, {"X_Data", -1.5}});
    ASSERT_TRUE(written) << written.error();
    EXPECT_EQ(data.value(3, 1).text(), "0.25");
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[3], "3 0.25 -1.5");
    ASSERT_TRUE(data.write(3, {{"Rule_Data", std::nullopt}}));
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[3], "3 - -1.5");
}

TEST_F(Data, GivesElevenPointsWhenAllCellsAreFilled)
{
    makeFile(at("XDirection.mdb"), columnsOf({"X_Data"}), {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, 0.5);
    refresh();
    ASSERT_TRUE(data.write(11, {{"Rule_Data", 99.0}}));
    const auto points = pointsOf(data, 2);
    ASSERT_TRUE(points);
    EXPECT_EQ(points->back().dial, 0.5F) << "the twelfth row has no part in it";
    EXPECT_FALSE(pointsOf(data, 3));
    EXPECT_FALSE(pointsOf(data, -1));
    ASSERT_TRUE(data.write(10, {{"X_Data", std::nullopt}}));
    EXPECT_FALSE(pointsOf(data, 2));
}

TEST_F(Data, GivesNoPointsOfTenRows)
{
    makeFile(at("XDirection.mdb"), columnsOf({"X_Data"}), {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 0.5);
    refresh();
    EXPECT_FALSE(pointsOf(data, 2));
}

TEST_F(Data, NumbersAnAddedRowByTheCountWithItself)
{
    create();
    refresh();
    const auto added = data.AddCalibrationRow();
    ASSERT_TRUE(added) << added.error();
    EXPECT_EQ(data.rowCount(), 12);
    EXPECT_EQ(rowsOf(at("XDirection.mdb")).back(), "12 - -");
}

TEST_F(Data, DeletesTheLastRow)
{
    create();
    refresh();
    ASSERT_TRUE(data.AddCalibrationRow());
    ASSERT_TRUE(data.DeleteLastCalibrationRow());
    ASSERT_TRUE(data.DeleteLastCalibrationRow());
    EXPECT_EQ(data.rowCount(), 10);
    EXPECT_EQ(rowsOf(at("XDirection.mdb")).back(), "9 - -");
}

TEST_F(Data, DeletesNothingOfAnEmptyTable)
{
    makeFile(at("XDirection.mdb"), columnsOf({"X_Data"}), {}, 0);
    refresh();
    EXPECT_TRUE(data.DeleteLastCalibrationRow());
    EXPECT_EQ(data.rowCount(), 0);
}

TEST_F(Data, HasNothingOfAFileThatIsNone)
{
    put(at("XDirection.mdb"), "no database");
    const auto refreshed = data.Refresh();
    ASSERT_FALSE(refreshed);
    EXPECT_EQ(data.rowCount(), 0);
    EXPECT_TRUE(data.fields().empty());
    EXPECT_FALSE(data.AddCalibrationRow());
    EXPECT_FALSE(data.DeleteLastCalibrationRow());
    EXPECT_EQ(contentOf(at("XDirection.mdb")), "no database");
}

TEST_F(Data, OnlyLooksAtAFileThatSomebodyElseWrites)
{
    create();
    auto other = jet::OpenDatabase(at("XDirection.mdb"));
    ASSERT_TRUE(other);
    refresh();
    EXPECT_EQ(data.rowCount(), 11);
    EXPECT_NE(data.readOnlyBecause().find("another program"), std::string::npos) << data.readOnlyBecause();
    EXPECT_FALSE(data.write(0, {{"Rule_Data", 1.0}}));
}

TEST_F(Data, KeepsOtherProgramsFromWritingWhileItIsOpen)
{
    create();
    refresh();
    EXPECT_FALSE(jet::OpenDatabase(at("XDirection.mdb")));
    data.Close();
    EXPECT_TRUE(jet::OpenDatabase(at("XDirection.mdb")));
}

TEST_F(Data, HasNothingOfAFileWithMorePointsThanCanBeNumbered)
{
    makeFile(at("XDirection.mdb"), columnsOf({"X_Data"}), std::vector<int>(32769, 1), 0.5);
    const auto refreshed = data.Refresh();
    ASSERT_FALSE(refreshed);
    EXPECT_NE(refreshed.error().find("has more than 32768 points"), std::string::npos) << refreshed.error();
    EXPECT_FALSE(checkCalibrationFile(at("XDirection.mdb")));
}

TEST_F(Data, OnlyLooksAtAFileOfWhichRowsAreMissing)
{
    create();
    auto content = contentOf(at("XDirection.mdb"));
    content[18 * 4096 + 12] = 9; // of the 11 slots of its page
    put(at("XDirection.mdb"), content);
    refresh();
    EXPECT_EQ(data.rowCount(), 9);
    EXPECT_NE(data.readOnlyBecause().find("2 of the 11 rows of a table are missing"), std::string::npos)
        << data.readOnlyBecause();
    EXPECT_FALSE(data.write(0, {{"Rule_Data", 1.0}}));
    data.Close();
    EXPECT_EQ(contentOf(at("XDirection.mdb")), content);
}

class OlderFile : public Data {
protected:
    OlderFile() : older(olderFile()) { put(at("XDirection.mdb"), older); }
    std::string older;
};

TEST_F(OlderFile, IsShownWithoutBeingTouched)
{
    refresh();
    ASSERT_EQ(data.rowCount(), 11);
    EXPECT_EQ(data.value(10, 1).text(), "10");
    EXPECT_TRUE(data.value(10, 2).isNull());
    EXPECT_EQ(data.readOnlyBecause(), "");
    data.Close();
    EXPECT_EQ(contentOf(at("XDirection.mdb")), older);
}

TEST_F(OlderFile, IsWrittenAnewWhenItIsFirstChanged)
{
    refresh();
    const auto written = data.write(4, {{"X_Data", 1.25}});
    ASSERT_TRUE(written) << written.error();
    EXPECT_EQ(data.olderKeptAs(), at("XDirection.older.mdb"));
    EXPECT_EQ(contentOf(at("XDirection.older.mdb")), older);
    const auto rows = rowsOf(at("XDirection.mdb"));
    ASSERT_EQ(rows.size(), 11U);
    EXPECT_EQ(rows[4], "4 4 1.25");
    EXPECT_EQ(rows[5], "5 5 -");
    ASSERT_TRUE(data.write(5, {{"X_Data", 2.25}}));
    EXPECT_EQ(rowsOf(at("XDirection.mdb"))[5], "5 5 2.25");
    EXPECT_EQ(names(), (Names{"XDirection.mdb", "XDirection.older.mdb"}));
}

TEST_F(OlderFile, IsHeldUntilTheNewOneHasItsName)
{
    refresh();
    bool held = false;
    atRename = [&](const std::filesystem::path& to) {
        if (to == at("XDirection.mdb")) held = !jet::OpenDatabase(to);
    };
    ASSERT_TRUE(data.write(4, {{"X_Data", 1.25}}));
    EXPECT_TRUE(held) << "another program's change would be lost";
}

TEST_F(OlderFile, TakesNoNameOfAnotherFileWhenItIsWrittenAnew)
{
    put(at("XDirection.new.mdb"), "mine");
    refresh();
    const auto written = data.write(4, {{"X_Data", 1.25}});
    ASSERT_TRUE(written) << written.error();
    EXPECT_EQ(contentOf(at("XDirection.new.mdb")), "mine");
    EXPECT_EQ(names(), (Names{"XDirection.mdb", "XDirection.new.mdb", "XDirection.older.mdb"}));
}

TEST_F(OlderFile, BehindALinkIsReplacedWhereTheLinkLeads)
{
    std::filesystem::rename(at("XDirection.mdb"), at("elsewhere.mdb"));
    std::filesystem::create_symlink("elsewhere.mdb", at("XDirection.mdb"));
    refresh();
    ASSERT_TRUE(data.write(4, {{"X_Data", 1.25}}));
    EXPECT_TRUE(std::filesystem::is_symlink(at("XDirection.mdb")));
    EXPECT_EQ(rowsOf(at("elsewhere.mdb"))[4], "4 4 1.25");
    EXPECT_EQ(contentOf(at("XDirection.older.mdb")), older);
}

TEST_F(OlderFile, TakesNewRowsToo)
{
    refresh();
    const auto added = data.AddCalibrationRow();
    ASSERT_TRUE(added) << added.error();
    EXPECT_EQ(rowsOf(at("XDirection.mdb")).back(), "12 - -");
}

TEST_F(OlderFile, StaysWholeWhenItCannotBeWrittenAnew)
{
    refresh();
    {
        const test::LargestFile limit(5000);
        const auto written = data.write(4, {{"X_Data", 1.25}});
        ASSERT_FALSE(written);
        EXPECT_EQ(written.error().find(".new"), std::string::npos) << written.error();
    }
    EXPECT_EQ(data.rowCount(), 11) << "it is shown as before";
    EXPECT_EQ(contentOf(at("XDirection.mdb")), older);
    EXPECT_EQ(names(), (Names{"XDirection.mdb"}));
    EXPECT_TRUE(data.write(4, {{"X_Data", 1.25}}));
}

TEST_F(Data, OlderFileOfTextsKeepsTheNumbersWhenItIsWrittenAnew)
{
    put(at("XDirection.mdb"), olderFileOfZ());
    refresh();
    ASSERT_EQ(data.fields().size(), 6U);
    EXPECT_EQ(data.value(0, 3).text(), "morning");
    const auto written = data.write(1, {{"Z1_Data", 5.5}, {"Z2_Data", 6.5}});
    ASSERT_TRUE(written) << written.error();
    Names columns;
    for (const auto& field : data.fields()) {
        columns.push_back(field.name + ":" + std::string(jet::typeName(field.type)));
    }
    EXPECT_EQ(columns,
              (Names{"SN:Integer", "Rule_Data:Single", "Z1_Data:Single", "Z2_Data:Single", "Small:Double"}));
    const auto rows = rowsOf(at("XDirection.mdb"));
    EXPECT_EQ(rows[0], "0 0.25 1.25 2.25 200");
    EXPECT_EQ(rows[1], "1 1.25 5.5 6.5 200");
}

TEST_F(Data, FileToWhichANumberColumnWasAddedIsWrittenAnewAndTheOriginalKept)
{
    makeFile(at("XDirection.mdb"), columnsOf({"X_Data"}), {0, 1}, 0.5);
    addColumn(at("XDirection.mdb"), "Check");
    const auto widened = contentOf(at("XDirection.mdb"));
    refresh();
    ASSERT_EQ(data.fields().size(), 4U);
    EXPECT_EQ(data.readOnlyBecause(), "");
    const auto written = data.write(0, {{"X_Data", 1.25}, {"Check", 2.5}});
    ASSERT_TRUE(written) << written.error();
    EXPECT_EQ(rowsOf(at("XDirection.mdb")), (Names{"0 0.5 1.25 2.5", "1 0.5 0.5 -"}));
    EXPECT_EQ(data.olderKeptAs(), at("XDirection.older.mdb"));
    EXPECT_EQ(contentOf(at("XDirection.older.mdb")), widened);
}

TEST_F(Data, FileWithAnIndexIsWrittenAnewAndTheOriginalKept)
{
    makeFile(at("XDirection.mdb"), columnsOf({"X_Data"}), {1, 0}, 0.5);
    addIndex(at("XDirection.mdb"));
    const auto indexed = contentOf(at("XDirection.mdb"));
    refresh();
    ASSERT_EQ(data.rowCount(), 2);
    EXPECT_EQ(data.value(0, 0).text(), "0");
    EXPECT_EQ(data.readOnlyBecause(), "") << "it can be written, if not as it is";
    const auto written = data.write(0, {{"X_Data", 1.25}});
    ASSERT_TRUE(written) << written.error();
    EXPECT_EQ(rowsOf(at("XDirection.mdb")), (Names{"0 0.5 1.25", "1 0.5 0.5"}));
    EXPECT_EQ(contentOf(at("XDirection.older.mdb")), indexed);
    EXPECT_EQ(rowsOf(at("XDirection.older.mdb")), (Names{"0 0.5 0.5", "1 0.5 0.5"}));
}

} // namespace
} // namespace quorvel::calibration
