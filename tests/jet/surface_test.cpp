#include "jet/fixture.h"
#include "jet/header.h"
#include "jet/index_leaf.h"
#include "jet/jet3_file.h"
#include "jet/query.h"
#include "jet/text_coding.h"

#include <cmath>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvel::jet::testing {
namespace {

using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

struct KnownFile {
    std::uint8_t stamp[8];
    std::uint32_t build, key;
    ByteVector stream;
};

const KnownFile kKnownFiles[] = {
    {{0xbc, 0x72, 0x1f, 0x7d, 0xf1, 0x9f, 0xe2, 0x40},
     0x21AA,
     0x75FF76EA,
     {0xa5, 0x32, 0x12, 0x55, 0xa2, 0x13, 0x65, 0x6a, 0xcc}},
    {{0x1b, 0xa9, 0x1f, 0x2b, 0x2d, 0x09, 0xe3, 0x40},
     0x2341,
     0x2D4FAE92,
     {0xdb, 0x33, 0x3d, 0x19, 0x38, 0xe3, 0xd1, 0x04, 0x7a}},
    {{0x5d, 0xfe, 0x1c, 0x7c, 0xbc, 0x98, 0xe3, 0x40},
     0x2527,
     0x7C2CFBD0,
     {0x91, 0x69, 0x05, 0xe6, 0x00, 0xa2, 0xdc, 0xa4, 0xdc}},
    {{0xab, 0x7e, 0xcd, 0x69, 0xe2, 0x5c, 0xe2, 0x40},
     0x184A,
     0x6F2D7B02,
     {0xa8, 0x3e, 0x83, 0x50, 0x75, 0xda, 0xea, 0x14, 0x48}},
    {{0xb8, 0x79, 0x6d, 0x72, 0x1e, 0xd6, 0xe3, 0x40},
     0x11A6,
     0x7A4D7EBA,
     {0xac, 0xdb, 0xde, 0x79, 0xcf, 0x8f, 0x0d, 0x76, 0xe5}},
    {{0x3e, 0x85, 0xd3, 0x3b, 0x3e, 0xab, 0xe4, 0x40}, 0x261C, 0x3853837E, {0x67, 0x8a}},
    {{0x81, 0xaf, 0xd4, 0x6b, 0x4f, 0xec, 0xe4, 0x40}, 0x11A6, 0x63F4A8B4, {0x04, 0xe9}},
};

TEST(SecurityIds, KeyComesFromStampAndBuildAndGivesTheStream)
{
    for (const auto& file : kKnownFiles) {
        Page header{};
        putBytes(header, 0x72, file.stamp);
        put32(header, 0x6A, file.build);
        put32(header, 0x6E, 0x0409);
        EXPECT_EQ(securityKey(header), file.key);
        EXPECT_EQ(rc4Stream(file.key, file.stream.size()), file.stream);
    }
}

TEST(IndexKeys, NamesWeighAsTheEngineWeighsThem)
{
    const auto key = [](std::string_view text) {
        ByteVector bytes;
        EXPECT_TRUE(appendTextKey(bytes, text));
        return bytes;
    };
    EXPECT_THAT(key("Readings"),
                ElementsAreArray({0x7f, 0x69, 0x51, 0x4a, 0x4f, 0x59, 0x62, 0x55, 0x6b, 0x01, 0x00}));
    EXPECT_THAT(key("A-b'c -d"),
                ElementsAreArray({0x7f, 0x4a, 0x4c, 0x4d, 0x07, 0x4f, 0x01, 0x01, 0x01, 0x01, 0x80, 0x0b,
                                  0x06, 0x82, 0x80, 0x0f, 0x06, 0x80, 0x80, 0x17, 0x06, 0x82, 0x00}));
    ByteVector none;
    EXPECT_FALSE(appendTextKey(none, "方"));
}

TEST(TextCoding, CompressedTextSwitchesWidth)
{
    const std::uint8_t stored[] = {0xFF, 0xFE, 'a', 0x00, 0xB9, 0x65, 0x00, 'b'};
    EXPECT_EQ(decodeText(stored), "a方b");
    const std::uint8_t lonely[] = {0x00, 0xD8, 'x', 0x00};
    EXPECT_EQ(decodeText(lonely), "\xEF\xBF\xBDx");
    EXPECT_FALSE(encodeText("\xC0\x80"));
    EXPECT_EQ(decodeAnsi(ansi("\x80"), 1252), "€");
}

TEST(TextCoding, CharactersOfTwoUnitsComeBack)
{
    const auto stored = encodeText("a𝛥𠀀");
    ASSERT_TRUE(stored);
    EXPECT_EQ(*stored, (ByteVector{'a', 0, 0x35, 0xD8, 0xE5, 0xDE, 0x40, 0xD8, 0x00, 0xDC}));
    EXPECT_EQ(decodeText(*stored), "a𝛥𠀀");
}

TEST(Dates, AreRoundedToTheMillisecondAlsoOverMidnight)
{
    EXPECT_EQ(Date{45352.5 + 0.25 / 86400}.iso(), "2024-03-01T12:00:00.250");
    EXPECT_EQ(Date{45352 - 1e-9}.iso(), "2024-03-01T00:00:00");
    EXPECT_EQ(Date{-0.9999999999}.iso(), "1899-12-31T00:00:00");
    EXPECT_EQ(Date{2958465.9999999999}.iso(), "") << "there is no year 10000";
}

TEST(Dates, DaysBefore1900CountTheirTimeForward)
{
    EXPECT_EQ(Date{-1.25}.iso(), "1899-12-29T06:00:00");
    EXPECT_EQ(Date::of({1899, 12, 29, 6})->serial, -1.25);
    EXPECT_EQ(Date{NAN}.iso(), "");
    EXPECT_EQ(Date{2958466}.iso(), "");
    EXPECT_EQ(Date{-657434}.iso(), "0100-01-01T00:00:00");
    EXPECT_FALSE(Date::of({2023, 2, 29}));
    EXPECT_FALSE(Date::of({2023, 2, 28, 24}));
}

TEST(Queries, KeywordsAndNamesInAnyCase)
{
    const auto query = parseQuery("SELECT  * From [my data] Order By [a b] desc, c ASC;");
    ASSERT_TRUE(query);
    EXPECT_EQ(query->table, "my data");
    ASSERT_EQ(query->order.size(), 2U);
    EXPECT_EQ(query->order[0].field, "a b");
    EXPECT_TRUE(query->order[0].descending);
    EXPECT_FALSE(query->order[1].descending);
    for (const char* text :
         {"", "select", "select x from t", "select * from t where a=1", "select * from t order c"}) {
        EXPECT_FALSE(parseQuery(text)) << text;
    }
}

class Surface : public ::testing::Test {
protected:
    Surface()
    {
        makeFile(disk_);
        reopen();
    }

    void reopen(std::string_view source = "data")
    {
        rows_.reset();
        database_.reset();
        auto opened = OpenDatabase(kPath, {.files = &files_});
        EXPECT_TRUE(opened) << opened.error();
        database_.emplace(std::move(*opened));
        auto rows = database_->OpenRecordset(source);
        ASSERT_TRUE(rows) << rows.error();
        rows_.emplace(std::move(*rows));
    }

    std::vector<double> order()
    {
        std::vector<double> values;
        for (auto read = rows_->MoveFirst(); read && !rows_->Eof(); read = rows_->MoveNext()) {
            values.push_back(rows_->Fields("X").Value().number().value_or(-99));
        }
        return values;
    }

    Disk disk_;
    MemoryFiles files_{disk_};
    std::optional<Database> database_;
    std::optional<Recordset> rows_;
};

TEST_F(Surface, EmptyRowIsSavedFoundAgainEditedAndSaved)
{
    rows_->AddNew();
    ASSERT_TRUE(rows_->Update());
    EXPECT_TRUE(rows_->Eof());
    ASSERT_TRUE(rows_->SetBookmark(rows_->LastModified()));
    EXPECT_TRUE(rows_->Fields("x").Value().isNull());
    rows_->Edit();
    rows_->Fields("X").SetValue(12.5);
    ASSERT_TRUE(rows_->Update());
    EXPECT_EQ(rows_->Fields("x").Value(), Value(12.5F));
    EXPECT_EQ(rows_->RecordCount(), 1);
}

TEST_F(Surface, RowsComeInTheOrderAskedForAndNewOnesLast)
{
    for (const double x : {3, 1, 2})
        ASSERT_TRUE(addRow(*rows_, x));
    rows_->AddNew();
    ASSERT_TRUE(rows_->Update());
    EXPECT_EQ(order(), (std::vector<double>{3, 1, 2, -99}));
    reopen("Select * from DATA order by X");
    EXPECT_EQ(order(), (std::vector<double>{-99, 1, 2, 3}));
    ASSERT_TRUE(addRow(*rows_, 0));
    EXPECT_EQ(order(), (std::vector<double>{-99, 1, 2, 3, 0}));
    reopen("select * from data order by x desc");
    EXPECT_EQ(order(), (std::vector<double>{3, 2, 1, 0, -99}));
}

TEST_F(Surface, DeletedRowIsGoneAndTheNextFollows)
{
    for (const double x : {1, 2, 3})
        ASSERT_TRUE(addRow(*rows_, x));
    ASSERT_TRUE(rows_->MoveFirst());
    ASSERT_TRUE(rows_->Delete());
    EXPECT_TRUE(rows_->Fields("x").Value().isNull());
    EXPECT_FALSE(rows_->Delete());
    ASSERT_TRUE(rows_->MoveNext());
    EXPECT_EQ(rows_->Fields("x").Value(), Value(2.0F));
    EXPECT_EQ(order(), (std::vector<double>{2, 3}));
    for (int i = 0; i < 300; ++i) {
        ASSERT_TRUE(addRow(*rows_, i));
        ASSERT_TRUE(rows_->MoveLast());
        ASSERT_TRUE(rows_->Delete());
    }
    ASSERT_TRUE(database_->Close());
    EXPECT_EQ(valuesOf(disk_), (std::vector<double>{2, 3}));
    EXPECT_THAT(faultsOf(disk_.files[kPath.string()]), ::testing::IsEmpty());
}

TEST_F(Surface, WhatDoesNotFitIsReportedByUpdate)
{
    const std::pair<const char*, Value> wrong[] = {
        {"x", 1e39}, {"x", NAN}, {"x", std::string("one")}, {"time", 1.5}, {"nothing", 1}};
    for (const auto& [field, value] : wrong) {
        rows_->AddNew();
        rows_->Fields(field).SetValue(value);
        EXPECT_FALSE(rows_->Update()) << field;
    }
    EXPECT_FALSE(rows_->Update()) << "nothing begun";
    EXPECT_EQ(rows_->RecordCount(), 0);
}

TEST_F(Surface, NamesAndTypesAreCheckedWhenATableIsAppended)
{
    auto made = CreateDatabase("new.mdb", kGeneralLocale, &files_);
    ASSERT_TRUE(made);
    for (const auto& name : {std::string("a.b"), std::string(" a"), std::string("a "), std::string(),
                             std::string(65, 'a'), std::string("\xC0\x80")}) {
        EXPECT_FALSE(made->Append(tableOf(name, {{"x", FieldType::Long}}))) << name;
        EXPECT_FALSE(made->Append(tableOf("t", {{name, FieldType::Long}}))) << name;
    }
    EXPECT_TRUE(made->Append(tableOf(std::string(64, 'a'), {{std::string(64, 'x'), FieldType::Long}})));
    EXPECT_FALSE(made->Append(tableOf("a", {})));
    EXPECT_FALSE(made->Append(tableOf("a", {{"x", FieldType::Text}})));
    EXPECT_FALSE(made->Append(tableOf("a", {{"x", FieldType::Long}, {"X", FieldType::Long}})));
    EXPECT_FALSE(made->Append(tableOf("msysobjects", {{"x", FieldType::Long}})));
    EXPECT_TRUE(made->Append(tableOf("a", {{"x", FieldType::Long}})));
    auto rows = made->OpenRecordset("a");
    ASSERT_TRUE(rows) << rows.error();
    EXPECT_TRUE(addRow(*rows, -7.5));
    const auto late = made->Append(tableOf("b", {{"x", FieldType::Long}}));
    EXPECT_FALSE(late);
    EXPECT_FALSE(disk_.files.contains("new.mdb")) << "not before Close()";
    EXPECT_TRUE(made->Close());
    EXPECT_TRUE(disk_.files.contains("new.mdb"));
    EXPECT_FALSE(CreateDatabase("new.mdb", kGeneralLocale, &files_));
    EXPECT_FALSE(CreateDatabase("other.mdb", "", &files_));
}

TEST_F(Surface, ClosedDatabaseEndsItsRecordsets)
{
    ASSERT_TRUE(addRow(*rows_, 1));
    ASSERT_TRUE(database_->Close());
    EXPECT_TRUE(rows_->Eof());
    const auto late = addRow(*rows_, 2);
    ASSERT_FALSE(late);
    EXPECT_THAT(late.error(), HasSubstr("has been closed"));
    EXPECT_FALSE(database_->OpenRecordset("data"));
    EXPECT_TRUE(database_->Close());
}

} // namespace
} // namespace quorvel::jet::testing
