#include "calibration/database.h"

#include "calibration/calibration_files.h"

#include <QProcess>
#include <QStandardPaths>

#include <gmock/gmock.h>

#include <numeric>

namespace quorvel::calibration {
namespace {

using jet::FieldType;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Names = std::vector<std::string>;

struct Expected {
    const char* file;
    Names columns;
};

std::string named(const jet::FieldDef& field)
{
    return field.name + ":" + std::string(jet::typeName(field.type));
}

Names namedFields(const std::filesystem::path& path)
{
    Names found;
    auto database = jet::OpenDatabase(path, {.access = jet::Access::ReadOnly});
    EXPECT_TRUE(database) << database.error();
    const auto fields = database->Fields("Calibration");
    EXPECT_TRUE(fields) << fields.error();
    for (const auto& field : *fields) {
        found.push_back(named(field));
    }
    return found;
}

class NewFile : public FolderOfFiles, public ::testing::WithParamInterface<Expected> {};

TEST_P(NewFile, HasElevenPointsWithoutReadings)
{
    const auto path = at(GetParam().file);
    const auto created = CreateCalibrationDatabase(path);
    ASSERT_TRUE(created) << created.error();
    EXPECT_EQ(namedFields(path), GetParam().columns);
    const auto rows = rowsOf(path);
    ASSERT_EQ(rows.size(), 11U);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::string expected = std::to_string(i);
        for (std::size_t column = 1; column < GetParam().columns.size(); ++column) {
            expected += " -";
        }
        EXPECT_EQ(rows[i], expected);
    }
    EXPECT_EQ(names(), (Names{GetParam().file}));
}

INSTANTIATE_TEST_SUITE_P(
    Files, NewFile,
    ::testing::Values(Expected{"XDirection.mdb", {"SN:Integer", "Rule_Data:Single", "X_Data:Single"}},
                      Expected{"YDirection.mdb", {"SN:Integer", "Rule_Data:Single", "Y_Data:Single"}},
                      Expected{"ZDirection.mdb",
                               {"SN:Integer", "Rule_Data:Single", "Z1_Data:Single", "Z2_Data:Single"}},
                      Expected{"my XDirection.mdb", {"SN:Integer", "Rule_Data:Single", "X_Data:Single"}},
                      Expected{"WDirection.mdb", {"SN:Integer", "Rule_Data:Single"}},
                      Expected{"other.mdb", {"SN:Integer", "Rule_Data:Single"}}),
    [](const auto& row) {
        auto name = std::string(row.param.file);
        std::erase_if(name, [](char c) { return c == ' ' || c == '.'; });
        return name;
    });

using CalibrationFile = FolderOfFiles;

TEST_F(CalibrationFile, IsNotCreatedOverAnother)
{
    put(at("XDirection.mdb"), "mine");
    const auto created = CreateCalibrationDatabase(at("XDirection.mdb"));
    ASSERT_FALSE(created);
    EXPECT_EQ(created.error(),
              at("XDirection.mdb").string() + " already exists. Delete it or choose another name.");
    EXPECT_EQ(contentOf(at("XDirection.mdb")), "mine");
}

/// Works in a folder for its lifetime.
class WorkingIn {
public:
    explicit WorkingIn(const std::filesystem::path& folder) : before_(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~WorkingIn() { std::filesystem::current_path(before_); }
    WorkingIn(const WorkingIn&) = delete;
    WorkingIn& operator=(const WorkingIn&) = delete;

private:
    std::filesystem::path before_;
};

TEST_F(CalibrationFile, NamesItsDirectionAlsoWithoutAFolder)
{
    const WorkingIn folder(at(""));
    for (const auto* name : {"YDirection.mdb", "XDirection", "X Direction", "ZDirection.md"}) {
        ASSERT_TRUE(CreateCalibrationDatabase(name)) << name;
    }
    EXPECT_EQ(namedFields("YDirection.mdb"), (Names{"SN:Integer", "Rule_Data:Single", "Y_Data:Single"}));
    for (const auto* name : {"XDirection", "X Direction", "ZDirection.md"}) {
        EXPECT_EQ(namedFields(name), (Names{"SN:Integer", "Rule_Data:Single"})) << name;
    }
}

TEST_F(CalibrationFile, OfOursIsReadByAnotherProgram)
{
    ASSERT_TRUE(CreateCalibrationDatabase(at("ZDirection.mdb")));
    QProcess reader;
    reader.start("mdb-export", {QString::fromStdString(at("ZDirection.mdb").string()), "Calibration"});
    ASSERT_TRUE(reader.waitForFinished()) << "mdb-export is missing";
    const auto lines = reader.readAllStandardOutput().trimmed().split('\n');
    ASSERT_EQ(lines.size(), 12);
    EXPECT_EQ(lines.front(), "SN,Rule_Data,Z1_Data,Z2_Data");
    EXPECT_EQ(lines.last(), "10,,,");
}

/// Why a file is refused; "" when it is taken.
std::string refusal(const std::filesystem::path& path)
{
    const auto checked = checkCalibrationFile(path);
    return checked ? "" : checked.error();
}

TEST_F(CalibrationFile, IsTakenWithMoreColumnsBehind)
{
    auto fields = columnsOf({"X_Data"});
    fields.push_back({"Day", FieldType::Date});
    makeFile(at("more.mdb"), fields, {0, 1}, 1);
    EXPECT_EQ(refusal(at("more.mdb")), "");
    makeFile(at("double.mdb"),
             {{"sn", FieldType::Long}, {"RULE_DATA", FieldType::Double}, {"z1_DATA", FieldType::Double}}, {0},
             1);
    EXPECT_EQ(refusal(at("double.mdb")), "");
}

TEST_F(CalibrationFile, IsRefusedWithOtherColumns)
{
    const std::vector<std::vector<jet::FieldDef>> wrong = {
        columnsOf({}),
        columnsOf({"Other"}),
        {{"SN", FieldType::Integer}, {"X_Data", FieldType::Single}, {"Rule_Data", FieldType::Single}},
        {{"Rule_Data", FieldType::Single}, {"SN", FieldType::Integer}, {"X_Data", FieldType::Single}},
        {{"SN", FieldType::Integer}, {"Rule_Data", FieldType::Single}, {"X_Data", FieldType::Date}},
    };
    for (std::size_t i = 0; i < wrong.size(); ++i) {
        const auto path = at(("wrong" + std::to_string(i) + ".mdb").c_str());
        makeFile(path, wrong[i], {0}, 1);
        const auto reason = refusal(path);
        EXPECT_NE(reason.find(path.string()), std::string::npos) << i << reason;
        EXPECT_NE(reason.find("does not begin with the columns SN, Rule_Data"), std::string::npos)
            << i << reason;
    }
}

TEST_F(CalibrationFile, IsRefusedWhenItIsNone)
{
    put(at("text.mdb"), "no database");
    put(at("empty.mdb"), "");
    auto made = jet::CreateDatabase(at("data.mdb"), jet::kGeneralLocale);
    ASSERT_TRUE(made);
    auto table = made->CreateTableDef("data");
    table.Append(table.CreateField("x", FieldType::Single));
    ASSERT_TRUE(made->Append(table));
    ASSERT_TRUE(made->Close());
    const std::pair<const char*, std::string> reasons[] = {
        {"text.mdb", " is not an Access database"},
        {"empty.mdb", " is empty. Choose another file."},
        {"data.mdb", " has no table \"Calibration\". Choose another file or table."},
        {"missing.mdb", " could not be opened: No such file or directory."},
        {".", " is not a file."},
    };
    for (const auto& [name, reason] : reasons) {
        EXPECT_THAT(refusal(at(name)), StartsWith(at(name).string() + reason)) << name;
    }
}

TEST_F(CalibrationFile, IsRefusedWhenItIsCutOff)
{
    ASSERT_TRUE(CreateCalibrationDatabase(at("XDirection.mdb")));
    const auto whole = contentOf(at("XDirection.mdb"));
    for (std::size_t size = 0; size < whole.size(); size += 4096) {
        put(at("cut.mdb"), whole.substr(0, size));
        EXPECT_THAT(refusal(at("cut.mdb")), ContainsRegex("cut.mdb is (empty|cut off)")) << size;
    }
}

/// Takes a page away from the table of a file of ours that has many rows: one of 300 lies on two pages.
void loseAPage(const std::filesystem::path& path)
{
    auto content = contentOf(path);
    ASSERT_EQ(content.size(), 20U * 4096);
    content.replace(18 * std::size_t{4096}, 4096, 4096, '\0');
    put(path, content);
}

std::vector<int> manyNumbers()
{
    std::vector<int> numbers(300);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

TEST_F(CalibrationFile, IsRefusedWhenRowsAreMissing)
{
    makeFile(at("many.mdb"), columnsOf({"X_Data"}), manyNumbers(), 1.5);
    EXPECT_EQ(refusal(at("many.mdb")), "");
    loseAPage(at("many.mdb"));
    EXPECT_NE(refusal(at("many.mdb")).find("of the 300 rows of a table are missing"), std::string::npos)
        << refusal(at("many.mdb"));
}

TEST_F(CalibrationFile, IsRefusedWithBlankRowsWhereTheEndOfAPageIsZero)
{
    ASSERT_TRUE(CreateCalibrationDatabase(at("XDirection.mdb")));
    auto content = contentOf(at("XDirection.mdb"));
    content.replace(19 * std::size_t{4096} - 512, 512, 512, '\0');
    put(at("XDirection.mdb"), content);
    EXPECT_NE(refusal(at("XDirection.mdb")).find("a row of the table cannot be read"), std::string::npos)
        << refusal(at("XDirection.mdb"));
}

TEST_F(CalibrationFile, IsNotWrittenAnewWhenRowsAreMissing)
{
    makeFile(at("many.mdb"), columnsOf({"X_Data"}), manyNumbers(), 1.5);
    loseAPage(at("many.mdb"));
    const auto before = contentOf(at("many.mdb"));
    auto database = jet::OpenDatabase(at("many.mdb"));
    ASSERT_TRUE(database) << database.error();
    const auto renewed = renewFormat(*database, at("many.mdb"));
    ASSERT_FALSE(renewed);
    EXPECT_NE(renewed.error().find("rows of a table are missing"), std::string::npos) << renewed.error();
    EXPECT_EQ(contentOf(at("many.mdb")), before);
    EXPECT_EQ(names(), (Names{"many.mdb"}));
}

class Loading : public FolderOfFiles {
protected:
    Loading()
    {
        EXPECT_TRUE(CreateCalibrationDatabase(at("XDirection.mdb")));
        EXPECT_TRUE(CreateCalibrationDatabase(at("YDirection.mdb")));
        makeFile(at("saved.mdb"), columnsOf({"X_Data"}), {0, 1, 2}, 1.5);
    }
    jet::Result<std::string> load(const char* chosen)
    {
        return loadWorkingFile(at(chosen), at("XDirection.mdb"), *directionOf("X"), noon);
    }

    const std::time_t noon = [] {
        std::tm day{};
        day.tm_year = 2024 - 1900;
        day.tm_mon = 4;
        day.tm_mday = 17;
        day.tm_hour = 12;
        return std::mktime(&day);
    }();
};

TEST_F(Loading, ReplacesTheWorkingFileOfItsDirectionOnly)
{
    const auto other = contentOf(at("YDirection.mdb"));
    const auto loaded = load("saved.mdb");
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_EQ(rowsOf(at("XDirection.mdb")), (Names{"0 1.5 1.5", "1 1.5 1.5", "2 1.5 1.5"}));
    EXPECT_EQ(contentOf(at("YDirection.mdb")), other);
}

TEST_F(Loading, KeepsWhatIsReplacedUnderTheDay)
{
    const auto first = contentOf(at("XDirection.mdb"));
    const auto loaded = load("saved.mdb");
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_EQ(*loaded, "Loaded " + at("saved.mdb").string() + ". The points that were there are kept as " +
                           at("XDirection.2024-05-17.mdb").string() + ".");
    EXPECT_EQ(contentOf(at("XDirection.2024-05-17.mdb")), first);
    const auto again = load("YDirection.mdb");
    ASSERT_TRUE(again) << again.error();
    EXPECT_TRUE(again->ends_with("The points that were there are kept as " +
                                 at("XDirection.2024-05-17-2.mdb").string() + "."))
        << *again;
    EXPECT_EQ(contentOf(at("XDirection.2024-05-17-2.mdb")), contentOf(at("saved.mdb")));
    EXPECT_EQ(names(), (Names{"XDirection.2024-05-17-2.mdb", "XDirection.2024-05-17.mdb", "XDirection.mdb",
                              "YDirection.mdb", "saved.mdb"}));
}

TEST_F(Loading, KeepsNothingWhenNothingIsReplaced)
{
    const auto itself = load("XDirection.mdb");
    ASSERT_TRUE(itself) << itself.error();
    EXPECT_EQ(*itself, "");
    std::filesystem::remove(at("XDirection.mdb"));
    const auto fresh = load("saved.mdb");
    ASSERT_TRUE(fresh) << fresh.error();
    EXPECT_EQ(*fresh, "");
    EXPECT_EQ(names(), (Names{"XDirection.mdb", "YDirection.mdb", "saved.mdb"}));
}

TEST_F(Loading, LeavesTheWorkingFileAloneWhenTheChosenOneIsNone)
{
    const auto before = contentOf(at("XDirection.mdb"));
    put(at("text.mdb"), "no database");
    for (const auto* chosen : {"text.mdb", "missing.mdb", "."}) {
        const auto loaded = load(chosen);
        ASSERT_FALSE(loaded) << chosen;
        EXPECT_EQ(loaded.error(), refusal(at(chosen)));
        EXPECT_EQ(contentOf(at("XDirection.mdb")), before) << chosen;
    }
}

TEST_F(Loading, WarnsOfAnotherDirectionsFile)
{
    const auto loaded = load("YDirection.mdb");
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_NE(loaded->find("is of another direction: it has the readings Y_Data, not X_Data"),
              std::string::npos)
        << *loaded;
    EXPECT_EQ(contentOf(at("XDirection.mdb")), contentOf(at("YDirection.mdb")));
}

TEST_F(Loading, KeepsAWorkingFileThatCannotBeRead)
{
    put(at("XDirection.mdb"), "years of work, garbled");
    const auto loaded = load("saved.mdb");
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_NE(loaded->find("XDirection.unreadable.mdb"), std::string::npos) << *loaded;
    EXPECT_EQ(contentOf(at("XDirection.unreadable.mdb")), "years of work, garbled");
    EXPECT_EQ(contentOf(at("XDirection.mdb")), contentOf(at("saved.mdb")));
}

TEST_F(Loading, LeavesTheWorkingFileAloneWhenRowsOfTheChosenOneAreMissing)
{
    makeFile(at("many.mdb"), columnsOf({"X_Data"}), manyNumbers(), 1.5);
    loseAPage(at("many.mdb"));
    const auto before = contentOf(at("XDirection.mdb"));
    const auto loaded = load("many.mdb");
    ASSERT_FALSE(loaded);
    EXPECT_THAT(loaded.error(), HasSubstr("of the 300 rows of a table are missing"));
    EXPECT_EQ(contentOf(at("XDirection.mdb")), before);
}

TEST_F(Loading, KeepsALinkThatLeadsInCircles)
{
    std::filesystem::remove(at("XDirection.mdb"));
    std::filesystem::create_symlink("XDirection.mdb", at("XDirection.mdb"));
    const auto loaded = load("saved.mdb");
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_NE(loaded->find("XDirection.unreadable.mdb"), std::string::npos) << *loaded;
    EXPECT_EQ(contentOf(at("XDirection.mdb")), contentOf(at("saved.mdb")));
}

TEST_F(Loading, KeepsALinkAndReplacesItsTarget)
{
    std::filesystem::rename(at("XDirection.mdb"), at("elsewhere.mdb"));
    std::filesystem::create_symlink("elsewhere.mdb", at("XDirection.mdb"));
    const auto loaded = load("saved.mdb");
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_TRUE(std::filesystem::is_symlink(at("XDirection.mdb")));
    EXPECT_EQ(contentOf(at("elsewhere.mdb")), contentOf(at("saved.mdb")));
}

TEST_F(Loading, LeavesAWorkingFileAloneThatSomebodyElseWrites)
{
    const auto before = contentOf(at("XDirection.mdb"));
    auto other = jet::OpenDatabase(at("XDirection.mdb"));
    ASSERT_TRUE(other);
    const auto loaded = load("saved.mdb");
    ASSERT_FALSE(loaded);
    EXPECT_NE(loaded.error().find("is open in another program"), std::string::npos) << loaded.error();
    EXPECT_EQ(contentOf(at("XDirection.mdb")), before);
}

} // namespace
} // namespace quorvel::calibration
