#include "jet/fixture.h"
#include "jet/other_programs.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

/// Our files, read by programs that are not ours.
namespace quorvel::jet::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Row {
    Value integer, longer, single, dbl, date;
};

const FieldDef kFields[] = {{"N", FieldType::Integer},
                            {"L", FieldType::Long},
                            {"方向", FieldType::Single},
                            {"D", FieldType::Double},
                            {"时间", FieldType::Date}};

Date at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return *Date::of({year, month, day, hour, minute, second});
}

const float kExtremes[] = {0.0F, -0.25F, 3.4028235e38F, -3.4028235e38F, 1.17549435e-38F, 1e-45F, 123456.79F};

Row rowOf(int i)
{
    if (i % 7 == 3) return {};
    const auto step = static_cast<double>(i);
    return {static_cast<std::int16_t>(i % 2 == 0 ? -32768 + i % 1000 : 32767 - i % 1000),
            static_cast<std::int32_t>(i % 2 == 0 ? -2147483647 - 1 + i : 2147483647 - i),
            kExtremes[i % 7] == 0.0F ? static_cast<float>(step / 3) : kExtremes[i % 7], step * -1.0e100 / 3,
            at(1900 + i % 200, 1 + i % 12, 1 + i % 28, i % 24, i % 60, (i * 7) % 60)};
}

void setRow(Recordset& rows, const Row& row)
{
    const Value* values[] = {&row.integer, &row.longer, &row.single, &row.dbl, &row.date};
    for (int i = 0; i < 5; ++i)
        rows.Fields(i).SetValue(*values[i]);
}

/// A file of `count` rows, of which one is changed and the last deleted when `edited`.
std::vector<Row> makeRows(const std::filesystem::path& path, int count, bool edited)
{
    std::vector<Row> written;
    auto made = CreateDatabase(path, kGeneralLocale);
    EXPECT_TRUE(made);
    EXPECT_TRUE(made->Append(tableOf("Werte", {std::begin(kFields), std::end(kFields)})));
    EXPECT_TRUE(made->Close());
    auto opened = OpenDatabase(path);
    EXPECT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("Werte");
    EXPECT_TRUE(rows) << rows.error();
    for (int i = 0; i < count; ++i) {
        written.push_back(rowOf(i));
        rows->AddNew();
        setRow(*rows, written.back());
        EXPECT_TRUE(rows->Update());
    }
    if (edited) {
        EXPECT_TRUE(rows->MoveFirst());
        rows->Edit();
        written.front() = rowOf(1);
        setRow(*rows, written.front());
        EXPECT_TRUE(rows->Update());
        EXPECT_TRUE(rows->MoveLast());
        EXPECT_TRUE(rows->Delete());
        written.pop_back();
    }
    EXPECT_TRUE(opened->Close());
    EXPECT_THAT(faultsOfFile(path.string()), IsEmpty());
    return written;
}

/// The cell as one written value would read: numbers compared as numbers of its own width. With 17 digits
/// they are the same number; mdb-export prints 16, and 8 of a Single.
bool means(const std::string& cell, const Value& value, int digits)
{
    if (value.isNull()) return cell.empty() || cell == "null";
    const auto* const single = std::get_if<float>(&value.held());
    const int shown = single != nullptr && digits < 17 ? 8 : digits;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*g", shown, value.number().value_or(NAN));
    if (single != nullptr) return std::strtof(cell.c_str(), nullptr) == std::strtof(text.data(), nullptr);
    return std::strtod(cell.c_str(), nullptr) == std::strtod(text.data(), nullptr);
}

std::vector<std::string> cellsOf(std::string line)
{
    std::vector<std::string> cells;
    std::istringstream stream(line + ",");
    for (std::string cell; std::getline(stream, cell, ',');) {
        std::erase(cell, '"');
        cells.push_back(cell);
    }
    return cells;
}

/// Compares line by line; dates are compared as the text that this program makes of them.
void compare(const std::string& output, const std::vector<Row>& written, const char* dateEnding,
             int digits = 17)
{
    std::istringstream lines(output);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_LT(count, written.size());
        if (line.starts_with('[')) line = line.substr(1, line.size() - 2);
        const auto cells = cellsOf(line);
        ASSERT_EQ(cells.size(), 5U) << line;
        const Row& row = written[count];
        const bool same = means(cells[0], row.integer, digits) && means(cells[1], row.longer, digits) &&
                          means(cells[2], row.single, digits) && means(cells[3], row.dbl, digits);
        const std::string date = row.date.isNull() ? "" : row.date.text() + dateEnding;
        ASSERT_TRUE(same && (cells[4] == date || (date.empty() && cells[4] == "null")))
            << count << ": " << line;
    }
    EXPECT_EQ(count, written.size());
}

class Strangers : public ::testing::TestWithParam<int> {
protected:
    std::string file() const { return (folder_ / "t.mdb").string(); }

    Folder folder_;
};

TEST_P(Strangers, MdbtoolsReadEveryValue)
{
    const auto written = makeRows(folder_ / "t.mdb", GetParam(), GetParam() > 1);
    EXPECT_EQ(outputOf("mdb-ver " + file()), "JET4\n");
    EXPECT_EQ(outputOf("mdb-tables -1 " + file()), "Werte\n");
    EXPECT_EQ(std::stoul(outputOf("mdb-count " + file() + " Werte")), written.size());
    const auto schema = outputOf("mdb-schema " + file());
    EXPECT_THAT(schema,
                ::testing::ContainsRegex("N.\t+Integer.*\n.*L.\t+Long Integer.*\n.*方向.\t+Single.*\n.*D."
                                         "\t+Double.*\n.*时间.\t+DateTime"));
    compare(outputOf("mdb-export -H -T '%Y-%m-%dT%H:%M:%S' " + file() + " Werte"), written, "", 16);
}

TEST_P(Strangers, MdbReaderReadsEveryValue)
{
    const auto written = makeRows(folder_ / "t.mdb", GetParam(), GetParam() > 1);
    const auto output = outputOf("node " QUORVEL_MDB_READER "/read.js " + file() + " Werte");
    const auto end = output.find('\n');
    EXPECT_EQ(output.substr(0, end), R"(["N:integer","L:long","方向:float","D:double","时间:datetime"])");
    compare(output.substr(end + 1), written, ".000Z");
}

TEST_P(Strangers, OurOwnCommandReadsEveryValue)
{
    const auto written = makeRows(folder_ / "t.mdb", GetParam(), GetParam() > 1);
    const auto output = outputOf(QUORVEL_MDB_COMMAND " mdb " + file() + " werte");
    const auto end = output.find('\n');
    EXPECT_EQ(output.substr(0, end), "N,L,方向,D,时间");
    compare(output.substr(end + 1), written, "");
    EXPECT_EQ(outputOf(QUORVEL_MDB_COMMAND " mdb --json " + file()), "{\"table\":\"Werte\"}\n");
}

INSTANTIATE_TEST_SUITE_P(Rows, Strangers, ::testing::Values(0, 1, 11, 100000),
                         [](const auto& row) { return std::to_string(row.param); });

} // namespace
} // namespace quorvel::jet::testing
