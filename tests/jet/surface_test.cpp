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

TEST(OnTheDisk, SecondWriterIsRefusedAndNewFilesNeverReplace)
{
    const Folder folder;
    const auto path = folder / "标定.mdb";
    {
        auto made = CreateDatabase(path, kGeneralLocale);
        ASSERT_TRUE(made) << made.error();
        ASSERT_TRUE(made->Append(readings()));
        std::ofstream(path) << "in the way";
        EXPECT_FALSE(made->Close());
        EXPECT_EQ(std::filesystem::file_size(path), 10U);
        std::filesystem::remove(path);
    }
    auto made = CreateDatabase(path, kGeneralLocale);
    ASSERT_TRUE(made->Append(readings()));
    ASSERT_TRUE(made->Close());
    auto first = OpenDatabase(path);
    ASSERT_TRUE(first) << first.error();
    const auto second = OpenDatabase(path);
    ASSERT_FALSE(second);
    EXPECT_THAT(second.error(), HasSubstr("is used by another program"));
    EXPECT_TRUE(OpenDatabase(path, {.access = Access::ReadOnly}));
    EXPECT_TRUE(first->Close());
    EXPECT_TRUE(OpenDatabase(path));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path.parent_path()), {}), 1)
        << "nothing left over";
    EXPECT_FALSE(CreateDatabase(folder / "none/x.mdb", kGeneralLocale));
}

void write(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::string contents(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Status creating(const std::filesystem::path& path)
{
    auto made = CreateDatabase(path, kGeneralLocale);
    if (!made) return made.failure();
    if (auto appended = made->Append(readings()); !appended) return appended;
    return made->Close();
}

TEST(OnTheDisk, FileBeyondTwoGigabytesIsRefusedAndKeepsItsLength)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    const std::uintmax_t beyond = std::uintmax_t{64} << 30U | 1000;
    std::filesystem::resize_file(path, beyond);
    const auto opened = OpenDatabase(path);
    ASSERT_FALSE(opened);
    EXPECT_THAT(opened.error(), HasSubstr("is longer than any Access database"));
    EXPECT_EQ(std::filesystem::file_size(path), beyond);
}

TEST(OnTheDisk, LeftOverThatIsTheSecondNameOfAFinishedFileLosesOnlyTheName)
{
    const Folder folder;
    ASSERT_TRUE(creating(folder / "a.mdb"));
    const auto finished = contents(folder / "a.mdb");
    std::filesystem::create_hard_link(folder / "a.mdb", folder / "b.mdb.part");
    const auto done = creating(folder / "b.mdb");
    EXPECT_TRUE(done) << done.error();
    EXPECT_EQ(contents(folder / "a.mdb"), finished);
    EXPECT_TRUE(OpenDatabase(folder / "b.mdb"));
    EXPECT_FALSE(std::filesystem::exists(folder / "b.mdb.part"));
}

TEST(OnTheDisk, LeftOverOfAKilledCreationIsUsedUp)
{
    const Folder folder;
    const std::string leftOvers[] = {"", std::string("\0\1\0\0Stand", 9),
                                     std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(9000, 'x')};
    for (const auto& leftOver : leftOvers) {
        write(folder / "t.mdb.part", leftOver);
        const auto done = creating(folder / "t.mdb");
        EXPECT_TRUE(done) << done.error();
        EXPECT_TRUE(std::filesystem::remove(folder / "t.mdb"));
    }
}

TEST(OnTheDisk, FileOfAnotherKindUnderTheTemporaryNameStays)
{
    const Folder folder;
    write(folder / "t.mdb.part", "somebody else's download");
    const auto refused = creating(folder / "t.mdb");
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("another file is named \"t.mdb.part\""));
    EXPECT_EQ(contents(folder / "t.mdb.part"), "somebody else's download");
    std::filesystem::create_directory(folder / "u.mdb.part");
    EXPECT_FALSE(creating(folder / "u.mdb"));
    std::filesystem::create_symlink(folder / "t.mdb.part", folder / "v.mdb.part");
    EXPECT_FALSE(creating(folder / "v.mdb"));
    EXPECT_EQ(contents(folder / "t.mdb.part"), "somebody else's download");
}

TEST(OnTheDisk, SecondCreatorOfTheSameFileIsRefused)
{
    const Folder folder;
    auto first = CreateDatabase(folder / "t.mdb", kGeneralLocale);
    ASSERT_TRUE(first);
    const auto second = creating(folder / "t.mdb");
    ASSERT_FALSE(second);
    EXPECT_THAT(second.error(), HasSubstr("is being created by another program"));
    EXPECT_TRUE(first->Append(readings()));
    const auto done = first->Close();
    EXPECT_TRUE(done) << done.error();
    EXPECT_TRUE(OpenDatabase(folder / "t.mdb"));
}

TEST(OnTheDisk, CreationKilledAtAnyMomentLeavesNothingUnderTheNameOrAllOfIt)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    int unfinished = 0;
    for (int pause = 0; pause < 40; ++pause) {
        const pid_t child = ::fork();
        if (child == 0) {
            static_cast<void>(static_cast<bool>(creating(path)));
            ::pause();
        }
        ASSERT_GT(child, 0);
        ::usleep(static_cast<useconds_t>(pause * 100));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        if (std::filesystem::exists(path)) {
            EXPECT_THAT(faultsOfFile(path.string()), ::testing::IsEmpty());
            std::filesystem::remove(path);
            continue;
        }
        ++unfinished;
        const auto again = creating(path);
        EXPECT_TRUE(again) << again.error();
        EXPECT_THAT(faultsOfFile(path.string()), ::testing::IsEmpty());
        std::filesystem::remove(path);
    }
    EXPECT_GT(unfinished, 0) << "no child was killed in time";
}

TEST(OnTheDisk, PieceOfAPageThatFilledTheDiskIsCutBack)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    const auto size = std::filesystem::file_size(path);
    auto opened = OpenDatabase(path);
    auto rows = opened->OpenRecordset("data");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto old = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{size + 1000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const auto full = addRow(*rows, 1);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, old);
    ASSERT_FALSE(full);
    EXPECT_THAT(full.error(), HasSubstr("could not be written"));
    EXPECT_EQ(std::filesystem::file_size(path), size);
    EXPECT_TRUE(addRow(*rows, 1));
    EXPECT_TRUE(opened->Close());
    EXPECT_THAT(faultsOfFile(path.string()), ::testing::IsEmpty());
}

TEST(OnTheDisk, FileThatMayOnlyBeReadIsReadAndSaysWhy)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(path.parent_path().c_str(), 0755), 0);
    // The superuser may write everywhere.
    const uid_t user = ::geteuid();
    constexpr uid_t kNobody = 65534;
    if (user == 0) {
        ASSERT_EQ(::seteuid(kNobody), 0);
    }
    auto opened = OpenDatabase(path);
    ASSERT_EQ(::seteuid(user), 0);
    ASSERT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("data");
    ASSERT_TRUE(rows) << rows.error();
    const auto refused = addRow(*rows, 1);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("may only be read: Permission denied"));
}

} // namespace
} // namespace quorvel::jet::testing
