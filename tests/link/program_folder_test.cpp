#include "link/program_folder.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::link {
namespace {

/// The folder of a program that was installed, and the user's data folder.
class InstalledProgram : public ::testing::Test {
protected:
    InstalledProgram()
    {
        qputenv("XDG_DATA_HOME", data_.path().toLocal8Bit());
        write(own_.filePath("readme.txt"));
        write(own_.filePath(kInstalledMark));
    }

    static void write(const QString& path)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    }
    std::filesystem::path own() const { return own_.path().toStdString(); }
    std::filesystem::path users() const { return data_.filePath("quorvel").toStdString(); }

    QTemporaryDir data_;
    QTemporaryDir own_;
};

TEST(ProgramFolder, IsTheOneThatIsNamed)
{
    EXPECT_EQ(programFolder("/some/folder", "/own"), "/some/folder");
    EXPECT_EQ(programFolder("folder", "/own"), std::filesystem::current_path() / "folder");
    EXPECT_EQ(helpText("/some/folder", "/own"), "/some/folder/readme.txt");
    EXPECT_TRUE(programFolder("/大坝 1", "/own").u8string() == u8"/大坝 1");
}

TEST(ProgramFolder, OfAProgramWhereItWasBuiltIsItsOwn)
{
    const QTemporaryDir own;
    const std::filesystem::path folder = own.path().toStdString();
    EXPECT_EQ(programFolder("", folder), folder);
    EXPECT_EQ(helpText("", folder), folder / "readme.txt");
}

// Also for the administrator, who may write there: other users would see empty tables.
TEST_F(InstalledProgram, KeepsFilesInTheUsersFolderAlthoughItsOwnCanBeWritten)
{
    EXPECT_EQ(programFolder("", own()), users());
    EXPECT_TRUE(std::filesystem::is_directory(users()));
    EXPECT_TRUE(std::filesystem::is_empty(users())) << "nothing is copied there";
}

TEST_F(InstalledProgram, ShowsTheHelpTextItCameWithUnlessTheUserHasHisOwn)
{
    EXPECT_EQ(helpText("", own()), own() / "readme.txt");
    write(QString::fromStdString((users() / "readme.txt").string()));
    EXPECT_EQ(helpText("", own()), users() / "readme.txt");
}

} // namespace
} // namespace quorvel::link
