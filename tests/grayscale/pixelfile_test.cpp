#include "grayscale/pixelfile.h"

#include "autoread/largest_file.h"
#include "jet/database.h"
#include "support/held_file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace {

/// No file can be renamed to this.
std::string unrenamable;

} // namespace

/// In place of the system's, for the program and its libraries: a disk that fails at the last step.
extern "C" int rename(const char* from, const char* to) noexcept
{
    if (to != unrenamable) return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
    errno = EIO;
    return -1;
}

namespace quorvel::grayscale {
namespace {

using ::testing::ElementsAre;

PixelArray arrayOf(const std::vector<std::int16_t>& pixels)
{
    PixelArray array;
    array.store(pixels);
    return array;
}

class PixelFile : public ::testing::Test {
protected:
    QString file(const char* name) const { return folder_.filePath(QString::fromUtf8(name)); }
    QStringList names() const { return QDir(folder_.path()).entryList(QDir::Files); }
    void expectOldFile(const char* name) const
    {
        EXPECT_EQ(contents(file(name)), "old");
        EXPECT_EQ(names(), QStringList{QString::fromUtf8(name)}) << "something was left beside it";
    }

    static QByteArray contents(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
        return file.readAll();
    }

    static void fill(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    /// All rows as "sn hd", in the order of the query.
    static std::vector<std::string> rowsOf(const QString& path)
    {
        std::vector<std::string> texts;
        auto database = jet::OpenDatabase(path.toStdString(), {.access = jet::Access::ReadOnly});
        EXPECT_TRUE(database);
        if (!database) return texts;
        auto rows = database->OpenRecordset("select * from data order by sn");
        EXPECT_TRUE(rows);
        if (!rows) return texts;
        for (; !rows->Eof(); static_cast<void>(rows->MoveNext())) {
            texts.push_back(rows->Fields("sn").Value().text() + " " + rows->Fields("hd").Value().text());
        }
        return texts;
    }

    QTemporaryDir folder_;
};

TEST_F(PixelFile, DatabaseHoldsOneRowPerPixel)
{
    EXPECT_EQ(savePixels(file("pixels.mdb"), arrayOf({26, 255, 0})), "");
    EXPECT_THAT(rowsOf(file("pixels.mdb")), ElementsAre("1 26", "2 255", "3 0"));
}

TEST_F(PixelFile, DatabaseHasTheTwoIntegerColumnsInTheirOrder)
{
    ASSERT_EQ(savePixels(file("pixels.mdb"), arrayOf({1})), "");
    auto database = jet::OpenDatabase(file("pixels.mdb").toStdString(), {.access = jet::Access::ReadOnly});
    ASSERT_TRUE(database);
    auto fields = database->Fields("data");
    ASSERT_TRUE(fields);
    ASSERT_EQ(fields->size(), 2U);
    EXPECT_EQ(fields->at(0).name, "sn");
    EXPECT_EQ(fields->at(0).type, jet::FieldType::Integer);
    EXPECT_EQ(fields->at(1).name, "hd");
    EXPECT_EQ(fields->at(1).type, jet::FieldType::Integer);
}

TEST_F(PixelFile, NoPixelsGiveAnEmptyTable)
{
    EXPECT_EQ(savePixels(file("empty.mdb"), PixelArray()), "");
    EXPECT_THAT(rowsOf(file("empty.mdb")), ElementsAre());
}

TEST_F(PixelFile, TheLongestReadingFits)
{
    EXPECT_EQ(savePixels(file("long.mdb"), arrayOf(std::vector<std::int16_t>(protocol::kHighestIndex, 200))),
              "");
    const auto rows = rowsOf(file("long.mdb"));
    ASSERT_EQ(rows.size(), 20000U);
    EXPECT_EQ(rows.back(), "20000 200");
}

TEST_F(PixelFile, AnyNameButCsvIsADatabaseUnderExactlyThatName)
{
    EXPECT_EQ(savePixels(file("profile"), arrayOf({5})), "");
    EXPECT_EQ(names(), QStringList{QStringLiteral("profile")});
    EXPECT_THAT(rowsOf(file("profile")), ElementsAre("1 5"));
}

TEST_F(PixelFile, CsvNameGivesRowsOfTextUnderAHeader)
{
    EXPECT_EQ(savePixels(file("pixels.CSV"), arrayOf({26, 255})), "");
    EXPECT_EQ(contents(file("pixels.CSV")), "sn,hd\n1,26\n2,255\n");
}

TEST_F(PixelFile, ReplacesAnExistingFileAndLeavesNoOther)
{
    fill(file("pixels.mdb"), "old");
    fill(file("pixels.mdb.new"), "somebody else's");
    EXPECT_EQ(savePixels(file("pixels.mdb"), arrayOf({3})), "");
    EXPECT_THAT(rowsOf(file("pixels.mdb")), ElementsAre("1 3"));
    EXPECT_EQ(contents(file("pixels.mdb.new")), "somebody else's");
    EXPECT_EQ(names().size(), 2);
    fill(file("pixels.csv"), "old and longer than what comes");
    EXPECT_EQ(savePixels(file("pixels.csv"), arrayOf({3})), "");
    EXPECT_EQ(contents(file("pixels.csv")), "sn,hd\n1,3\n");
}

TEST_F(PixelFile, ReplacesWhatALinkPointsTo)
{
    fill(file("real.mdb"), "old");
    ASSERT_TRUE(QFile::link(file("real.mdb"), file("link.mdb")));
    EXPECT_EQ(savePixels(file("link.mdb"), arrayOf({3})), "");
    EXPECT_THAT(rowsOf(file("real.mdb")), ElementsAre("1 3"));
    EXPECT_TRUE(QFileInfo(file("link.mdb")).isSymLink());
}

TEST_F(PixelFile, AWriteProtectedFileStays)
{
    for (const auto* name : {"pixels.mdb", "pixels.csv"}) {
        fill(file(name), "old");
        QFile::setPermissions(file(name), QFileDevice::ReadOwner);
        EXPECT_TRUE(savePixels(file(name), arrayOf({3})).startsWith(file(name) + " is write-protected."));
        expectOldFile(name);
        ASSERT_TRUE(QFile::remove(file(name)));
    }
}

TEST_F(PixelFile, ANewDatabaseThatCannotBeMadeLeavesTheOldOne)
{
    fill(file("pixels.mdb"), "old");
    const test::LargestFile limit(5000);
    const auto reason = savePixels(file("pixels.mdb"), arrayOf({3}));
    EXPECT_TRUE(reason.startsWith(file("pixels.mdb") + " could not be written: ")) << qPrintable(reason);
    EXPECT_FALSE(reason.contains(".new")) << qPrintable(reason);
    expectOldFile("pixels.mdb");
}

TEST_F(PixelFile, AReplacementThatFailsAtTheLastStepLeavesTheOldFile)
{
    for (const auto* name : {"pixels.mdb", "pixels.csv"}) {
        fill(file(name), "old");
        unrenamable = file(name).toStdString();
        const auto reason = savePixels(file(name), arrayOf({3}));
        unrenamable.clear();
        EXPECT_EQ(reason, file(name) + " could not be replaced: Input/output error. Choose another name.");
        expectOldFile(name);
        ASSERT_TRUE(QFile::remove(file(name)));
    }
}

TEST_F(PixelFile, ADatabaseThatIsOpenElsewhereStays)
{
    ASSERT_EQ(savePixels(file("real.mdb"), arrayOf({1})), "");
    ASSERT_TRUE(QFile::link(file("real.mdb"), file("link.mdb")));
    for (const auto* held : {"real.mdb", "real.ldb"}) {
        const test::HeldFile holder(file(held).toStdString());
        for (const auto* chosen : {"real.mdb", "link.mdb"}) {
            EXPECT_EQ(savePixels(file(chosen), arrayOf({2})),
                      file(chosen) + " is open in another program. Close it there or choose another name.");
        }
    }
    EXPECT_THAT(rowsOf(file("real.mdb")), ElementsAre("1 1"));
}

TEST_F(PixelFile, WhatCannotBeWrittenIsKnownBefore)
{
    fill(file("old.csv"), "old");
    const auto before = names();
    EXPECT_EQ(whyNotWritable(file("old.csv")), "");
    EXPECT_EQ(whyNotWritable(file("new.jpg")), "");
    for (const auto& path : {file("missing/new.jpg"), file("old.csv/new.mdb"), folder_.path(),
                             QStringLiteral("/proc/new.mdb"), QStringLiteral("/dev/null")}) {
        const auto reason = whyNotWritable(path);
        EXPECT_TRUE(reason.contains(path)) << qPrintable(path) << ": " << qPrintable(reason);
    }
    EXPECT_EQ(contents(file("old.csv")), "old");
    EXPECT_EQ(names(), before) << "only asked";
}

TEST_F(PixelFile, AMissingFolderIsAReasonThatNamesTheFile)
{
    for (const auto* name : {"missing/pixels.mdb", "missing/pixels.csv"}) {
        const auto reason = savePixels(file(name), arrayOf({3}));
        EXPECT_TRUE(reason.contains(file(name))) << qPrintable(reason);
    }
}

TEST_F(PixelFile, AFolderOfThatNameIsAReasonAndStays)
{
    ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("pixels.mdb")));
    const auto reason = savePixels(file("pixels.mdb"), arrayOf({3}));
    EXPECT_TRUE(reason.contains(file("pixels.mdb"))) << qPrintable(reason);
    EXPECT_TRUE(QFileInfo(file("pixels.mdb")).isDir());
    EXPECT_TRUE(names().isEmpty());
}

} // namespace
} // namespace quorvel::grayscale
