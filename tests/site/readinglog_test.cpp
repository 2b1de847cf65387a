#include "files/lines.h"
#include "site/readinglog.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quorvel::site {
namespace {

using ::testing::HasSubstr;

class ReadingLogs : public ::testing::Test {
protected:
    std::filesystem::path file(const char* name) const { return folder.filePath(name).toStdString(); }
    QByteArray content(const char* name) const
    {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    void put(const char* name, const QByteArray& text) const
    {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    QTemporaryDir folder;
    QDate day{2024, 5, 17};
};

TEST_F(ReadingLogs, ANewFileBeginsWithTheHeader)
{
    ReadingLog log(file("a.csv"), {"head\n", false});
    EXPECT_TRUE(log.append(day, "1\n2\n"));
    EXPECT_TRUE(log.append(day.addDays(1), "3\n"));
    EXPECT_EQ(content("a.csv"), "head\n1\n2\n3\n");
}

TEST_F(ReadingLogs, AnOlderFileIsGoneOnWith)
{
    put("a.csv", "head\n1\n2,cut o");
    ReadingLog log(file("a.csv"), {"head\n", false});
    EXPECT_TRUE(log.append(day, "3\n"));
    EXPECT_EQ(content("a.csv"), "head\n1\n2,cut o\n3\n") << "the next line is one by itself";
}

TEST_F(ReadingLogs, EachDayHasAFileOnChoice)
{
    ReadingLog log(file("a.csv"), {"head\n", true});
    EXPECT_TRUE(log.append(day, "1\n"));
    EXPECT_TRUE(log.append(day, "2\n"));
    EXPECT_TRUE(log.append(day.addDays(1), "3\n"));
    EXPECT_EQ(content("a.2024-05-17.csv"), "head\n1\n2\n");
    EXPECT_EQ(content("a.2024-05-18.csv"), "head\n3\n");
    EXPECT_EQ(content("a.csv"), "no file");
}

TEST_F(ReadingLogs, AFileThatIsMovedAwayBeginsAnew)
{
    ReadingLog log(file("a.csv"), {"head\n", false});
    EXPECT_TRUE(log.append(day, "1\n"));
    std::filesystem::rename(file("a.csv"), file("a.csv.1"));
    EXPECT_TRUE(log.append(day, "2\n"));
    EXPECT_EQ(content("a.csv.1"), "head\n1\n");
    EXPECT_EQ(content("a.csv"), "head\n2\n");
}

TEST_F(ReadingLogs, AFolderThatComesLaterIsTriedAgain)
{
    ReadingLog log(file("later/a.csv"), {"head\n", false});
    const auto failed = log.append(day, "1\n");
    EXPECT_THAT(failed ? "" : failed.error(), HasSubstr("a.csv could not be written: "));
    EXPECT_FALSE(log.append(day, "2\n"));
    std::filesystem::create_directory(file("later"));
    EXPECT_TRUE(log.append(day, "3\n"));
    EXPECT_EQ(content("later/a.csv"), "head\n1\n2\n3\n") << "nothing of the time before is lost";
}

TEST_F(ReadingLogs, LinesThatWaitGoToTheFileOfTheirDay)
{
    ReadingLog log(file("later/a.csv"), {"head\n", true});
    EXPECT_FALSE(log.append(day, "1\n"));
    std::filesystem::create_directory(file("later"));
    EXPECT_TRUE(log.append(day.addDays(1), "2\n"));
    EXPECT_EQ(content("later/a.2024-05-17.csv"), "head\n1\n");
    EXPECT_EQ(content("later/a.2024-05-18.csv"), "head\n2\n");
}

TEST_F(ReadingLogs, OfWhatWaitsTheOldestIsLostFirst)
{
    ReadingLog log(file("later/a.csv"), {"head\n", false});
    const QByteArray half(ReadingLog::kMostWaiting / 2 - 1, 'x');
    for (const char* number : {"1", "2", "3"})
        EXPECT_FALSE(log.append(day, number + half + '\n'));
    std::filesystem::create_directory(file("later"));
    EXPECT_TRUE(log.append(day, "4\n"));
    EXPECT_EQ(content("later/a.csv"), "head\n3" + half + "\n4\n");
}

TEST_F(ReadingLogs, AFullDiskIsTold)
{
    files::LineFile lines;
    ASSERT_TRUE(lines.open("/dev/full"));
    const auto written = lines.append("1\n");
    EXPECT_THAT(written ? "" : written.error(), HasSubstr("/dev/full could not be written: No space left"));
}

} // namespace
} // namespace quorvel::site
