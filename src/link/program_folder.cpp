#include "link/program_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace quorvel::link {

namespace {

constexpr auto kHelpText = "readme.txt";

bool isThere(const std::filesystem::path& path)
{
    std::error_code error;
    return std::filesystem::exists(path, error);
}

} // namespace

std::filesystem::path programFolder(const std::string& wanted, const std::filesystem::path& own)
{
    // not by the code page of Windows
    if (!wanted.empty()) return std::filesystem::absolute(std::u8string(wanted.begin(), wanted.end()));
    if (QFileInfo(own).isWritable() && !isThere(own / kInstalledMark)) return own;
    return usersFolder();
}

std::filesystem::path usersFolder()
{
    const QDir shared(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    const QDir users(shared.filePath(kProgramName));
    users.mkpath(QStringLiteral("."));
    return users.filesystemPath();
}

std::filesystem::path helpText(const std::string& wanted, const std::filesystem::path& own)
{
    const auto text = programFolder(wanted, own) / kHelpText;
    return wanted.empty() && !isThere(text) ? own / kHelpText : text;
}

std::filesystem::path executableFolder()
{
    return QDir(QCoreApplication::applicationDirPath()).filesystemPath();
}

} // namespace quorvel::link
