#include "grayscale/pixelfile.h"

#include "jet/database.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

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
    EXPECT_EQ(savePixels(file("long.mdb"), arrayOf(std::vector<std::int16_t>(kHighestIndex, 200))), "");
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
