#include "app/program_folder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

void write(const QString& path, const QByteArray& text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(ProgramFolder, IsTheOneThatIsNamed)
{
    EXPECT_EQ(programFolder("/some/folder"), "/some/folder");
    EXPECT_EQ(programFolder("folder"), std::filesystem::current_path() / "folder");
}

// Without an application name, which the programs differ in.
TEST(ProgramFolder, OfAUserIsTheSameForAllProgramsAndGetsTheHelpTextOnce)
{
    const QTemporaryDir data;
    const QTemporaryDir own;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    write(own.filePath("readme.txt"), "how to begin");
    const auto folder = data.filePath("quorvel");
    EXPECT_EQ(usersFolder(QDir(own.path())), folder.toStdString());
    const auto help = folder + "/readme.txt";
    EXPECT_EQ(read(help), "how to begin");
    write(help, "my notes");
    usersFolder(QDir(own.path()));
    EXPECT_EQ(read(help), "my notes");
}

} // namespace
} // namespace quorvel::test
