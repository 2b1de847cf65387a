#include "autoread/record_file.h"

#include "autoread/exported.h"
#include "autoread/largest_file.h"
#include "jet/database.h"
#include "support/held_file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <cerrno>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvel::autoread {

using namespace protocol;

namespace {

using test::contents;
using test::exported;
using test::LargestFile;
using test::rowsIn;

std::vector<ino_t> flushedFolders;

/// Flushes of files that succeed before all others fail; -1: all succeed.
int flushesLeft = -1;

Record recordAt(int second, float x, float y, float z1 = 0, float z2 = 0)
{
    return {*jet::Date::of({2024, 2, 29, 23, 59, second}), {x, y, z1, z2}};
}

class RecordFile : public ::testing::Test {
protected:
    std::filesystem::path path(const char* name) const
    {
        return std::filesystem::path(folder.path().toStdString()) / name;
    }
    QStringList names() const
    {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    void put(const char* name, const char* text) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QTemporaryDir folder;
};

/// Both kinds of files, and what is read back of them.
struct Kind {
    const char* name;
    std::string (*read)(const std::filesystem::path&);
};

class EachKind : public RecordFile, public ::testing::WithParamInterface<Kind> {
protected:
    std::filesystem::path file() const { return path(GetParam().name); }
    std::string read() const { return GetParam().read(file()); }
};

INSTANTIATE_TEST_SUITE_P(RecordFile, EachKind,
                         ::testing::Values(Kind{"a.csv", contents}, Kind{"a.mdb", exported},
                                           Kind{"B.CSV", contents}, Kind{"no_extension", exported}));

TEST_P(EachKind, BeginsWithItsEmptyTable)
{
    ASSERT_TRUE(createRecordFile(file(), kTwoDirections, Existing::Keep));
    EXPECT_EQ(read(), "time,x,y\n");
    EXPECT_EQ(names().size(), 1);
}

TEST_P(EachKind, HasItsNameOnTheDisk)
{
    struct stat there {};
    ASSERT_EQ(::stat(folder.path().toLocal8Bit().constData(), &there), 0);
    for (const auto existing : {Existing::Keep, Existing::Replace}) {
        flushedFolders.clear();
        ASSERT_TRUE(createRecordFile(file(), kTwoDirections, existing));
        EXPECT_THAT(flushedFolders, ::testing::Contains(there.st_ino));
    }
}

TEST_P(EachKind, HoldsEachRowBeforeItIsClosed)
{
    auto sink = createRecordFile(file(), kTwoDirections, Existing::Keep);
    ASSERT_TRUE(sink) << sink.error();
    ASSERT_TRUE(sink->sink->append(recordAt(58, 12.345F, -1.5F)));
    EXPECT_EQ(read(), "time,x,y\n2024-02-29T23:59:58,12.345,-1.5\n");
    ASSERT_TRUE(sink->sink->append(recordAt(59, 0, 100.25F)));
    EXPECT_EQ(read(), "time,x,y\n2024-02-29T23:59:58,12.345,-1.5\n2024-02-29T23:59:59,0,100.25\n");
    EXPECT_TRUE(sink->sink->close());
    EXPECT_EQ(read(), "time,x,y\n2024-02-29T23:59:58,12.345,-1.5\n2024-02-29T23:59:59,0,100.25\n");
}

TEST_P(EachKind, HasTwoMoreFieldsForThreeDirections)
{
    auto sink = createRecordFile(file(), kThreeDirections, Existing::Keep);
    ASSERT_TRUE(sink) << sink.error();
    ASSERT_TRUE(sink->sink->append(recordAt(0, 1, 2, 3.5F, -4.25F)));
    EXPECT_EQ(read(), "time,x,y,z1,z2\n2024-02-29T23:59:00,1,2,3.5,-4.25\n");
}

TEST_P(EachKind, IsNotMadeOverAnExistingFile)
{
    put(GetParam().name, "old");
    const auto sink = createRecordFile(file(), kTwoDirections, Existing::Keep);
    ASSERT_FALSE(sink);
    EXPECT_THAT(sink.error(), ::testing::HasSubstr(file().string()));
    EXPECT_EQ(contents(file()), "old");
}

TEST_P(EachKind, ReplacesAnExistingFile)
{
    put(GetParam().name, "old");
    auto sink = createRecordFile(file(), kTwoDirections, Existing::Replace);
    ASSERT_TRUE(sink) << sink.error();
    ASSERT_TRUE(sink->sink->append(recordAt(0, 1, 2)));
    EXPECT_EQ(read(), "time,x,y\n2024-02-29T23:59:00,1,2\n");
    ASSERT_EQ(names().size(), 2) << "the old file is kept until the new one is complete";
    EXPECT_EQ(contents(sink->keptOld), "old");
    EXPECT_EQ(settleOld(sink->keptOld, false), sink->keptOld);
    EXPECT_EQ(contents(sink->keptOld), "old");
    EXPECT_EQ(settleOld(sink->keptOld, true), "");
    EXPECT_EQ(names().size(), 1) << "something was left beside it";
}

TEST_P(EachKind, KeepsALinkAndReplacesItsTarget)
{
    put("real", "old");
    std::filesystem::create_symlink("real", file());
    ASSERT_TRUE(createRecordFile(file(), kTwoDirections, Existing::Replace));
    EXPECT_EQ(read(), "time,x,y\n");
    EXPECT_TRUE(std::filesystem::is_symlink(file()));
}

TEST_P(EachKind, DoesNotReplaceAWriteProtectedFile)
{
    put(GetParam().name, "old");
    std::filesystem::permissions(file(), std::filesystem::perms(0444));
    const auto sink = createRecordFile(file(), kTwoDirections, Existing::Replace);
    ASSERT_FALSE(sink);
    EXPECT_THAT(sink.error(), ::testing::HasSubstr(file().string() + " is write-protected."));
    EXPECT_EQ(contents(file()), "old");
}

TEST_P(EachKind, NeedsAFolder)
{
    const auto sink = createRecordFile(path("missing") / GetParam().name, kTwoDirections, Existing::Keep);
    ASSERT_FALSE(sink);
    EXPECT_THAT(sink.error(), ::testing::HasSubstr("missing"));
}

TEST_P(EachKind, LeavesAFolderOfThatNameAlone)
{
    ASSERT_TRUE(std::filesystem::create_directory(file()));
    const auto sink = createRecordFile(file(), kTwoDirections, Existing::Replace);
    ASSERT_FALSE(sink);
    EXPECT_THAT(sink.error(), ::testing::HasSubstr("is not a file"));
    EXPECT_TRUE(std::filesystem::is_directory(file()));
    EXPECT_EQ(names().size(), 1);
}

TEST_P(EachKind, KeepsItsRowsWhenTheDiskIsFull)
{
    auto sink = createRecordFile(file(), kTwoDirections, Existing::Keep);
    ASSERT_TRUE(sink) << sink.error();
    int stored = 0;
    std::string reason;
    {
        const LargestFile limit(std::filesystem::file_size(file()) + 5000);
        for (; stored < 5000 && reason.empty(); ++stored) {
            const auto appended = sink->sink->append(recordAt(stored % 60, 1, 2));
            if (!appended) reason = appended.error();
        }
        --stored;
    }
    EXPECT_THAT(reason, ::testing::HasSubstr(file().string()));
    EXPECT_GT(stored, 10);
    EXPECT_EQ(rowsIn(read()), stored);
    EXPECT_TRUE(sink->sink->close());
    EXPECT_EQ(rowsIn(read()), stored);
}

TEST_P(EachKind, SaysThatARowMayBeThereWhenTheDiskFailsToTakeIt)
{
    for (int flushes = 0; flushes < 2; ++flushes) {
        auto sink = createRecordFile(file(), kTwoDirections, Existing::Replace);
        ASSERT_TRUE(sink) << sink.error();
        ASSERT_TRUE(sink->sink->append(recordAt(0, 1, 2)));
        flushesLeft = flushes;
        const auto failed = sink->sink->append(recordAt(1, 3, 4));
        flushesLeft = -1;
        if (failed) continue; // a row of text takes one flush
        EXPECT_THAT(
            failed.error(),
            ::testing::StartsWith(file().string() + " could not be brought to the disk: Input/output error"));
        const int rows = rowsIn(read());
        const bool may = failed.error().find("One more row may be in the file") != std::string::npos;
        EXPECT_TRUE(may || rows == 1) << failed.error();
        if (flushes == 1 || GetParam().read == contents) {
            EXPECT_TRUE(may) << failed.error();
        }
        EXPECT_TRUE(sink->sink->close());
    }
}

TEST_P(EachKind, LeavesTheOldFileWhenThereIsNoRoomForTheNewOne)
{
    put(GetParam().name, "old");
    {
        const LargestFile limit(4);
        EXPECT_FALSE(createRecordFile(file(), kTwoDirections, Existing::Replace));
    }
    EXPECT_EQ(contents(file()), "old");
    EXPECT_EQ(names().size(), 1) << "something was left beside it";
}

TEST_F(RecordFile, DatabaseThatIsOpenElsewhereIsNotReplaced)
{
    auto first = createRecordFile(path("a.mdb"), kTwoDirections, Existing::Keep);
    ASSERT_TRUE(first) << first.error();
    ASSERT_TRUE(first->sink->append(recordAt(0, 1, 2)));
    const auto second = createRecordFile(path("a.mdb"), kTwoDirections, Existing::Replace);
    ASSERT_FALSE(second);
    EXPECT_THAT(second.error(), ::testing::HasSubstr("is open in another program"));
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 1);
}

TEST_F(RecordFile, DatabaseThatIsOpenInAccessIsNotReplaced)
{
    put("a.mdb", "old");
    const test::HeldFile lock(path("a.ldb"));
    const auto sink = createRecordFile(path("a.mdb"), kTwoDirections, Existing::Replace);
    ASSERT_FALSE(sink);
    EXPECT_THAT(sink.error(), ::testing::HasSubstr("a.mdb is open in another program"));
    EXPECT_EQ(contents(path("a.mdb")), "old");
    EXPECT_EQ(names(), (QStringList{"a.ldb", "a.mdb"}));
}

TEST_F(RecordFile, TextWithANumberThatNoReadingHasIsNotRead)
{
    put("a.csv", "time,x,y\n2024-02-29T23:59:58,1E38,-1E38\n2024-02-29T23:59:59,1E39,0\n");
    const auto table = readRecordFile(path("a.csv"));
    ASSERT_FALSE(table) << *table->rows.back().readings[0];
    EXPECT_THAT(table.error(), ::testing::HasSubstr("a.csv, line 3, is not a row that a download writes."));
}

TEST_F(RecordFile, NumberInADatabaseThatNoReadingHasIsAnEmptyField)
{
    auto made = jet::CreateDatabase(path("a.mdb"), jet::kGeneralLocale);
    ASSERT_TRUE(made) << made.error();
    jet::TableDef table("data");
    table.Append({"time", jet::FieldType::Date});
    table.Append({"x", jet::FieldType::Double});
    table.Append({"y", jet::FieldType::Double});
    ASSERT_TRUE(made->Append(table));
    auto rows = made->OpenRecordset("data");
    rows->AddNew();
    rows->Fields("x").SetValue(-1e39);
    rows->Fields("y").SetValue(1.5);
    ASSERT_TRUE(rows->Update());
    ASSERT_TRUE(made->Close());
    const auto read = readRecordFile(path("a.mdb"));
    ASSERT_TRUE(read) << read.error();
    ASSERT_EQ(read->rows.size(), 1U);
    EXPECT_EQ(read->rows[0], (Record{std::nullopt, {std::nullopt, 1.5F}}));
}

TEST_F(RecordFile, DatabaseHasTheTypesOfItsFields)
{
    ASSERT_TRUE(createRecordFile(path("a.mdb"), kThreeDirections, Existing::Keep));
    const auto opened = jet::OpenDatabase(path("a.mdb"), {.access = jet::Access::ReadOnly});
    ASSERT_TRUE(opened) << opened.error();
    const auto fields = opened->Fields("data");
    ASSERT_TRUE(fields) << fields.error();
    std::vector<std::pair<std::string, int>> found;
    for (const auto& field : *fields) {
        found.emplace_back(field.name, static_cast<int>(field.type));
    }
    EXPECT_THAT(found, ::testing::ElementsAre(std::pair("time", 8), std::pair("x", 6), std::pair("y", 6),
                                              std::pair("z1", 6), std::pair("z2", 6)));
}

} // namespace

} // namespace quorvel::autoread

/// In place of the C library's: notes which folders are brought to the disk.
extern "C" int fsync(int handle)
{
    struct stat what {};
    if (::fstat(handle, &what) == 0 && S_ISDIR(what.st_mode))
        quorvel::autoread::flushedFolders.push_back(what.st_ino);
    else if (quorvel::autoread::flushesLeft == 0) {
        errno = EIO;
        return -1;
    } else if (quorvel::autoread::flushesLeft > 0) {
        --quorvel::autoread::flushesLeft;
    }
    return static_cast<int>(::syscall(SYS_fsync, handle));
}
