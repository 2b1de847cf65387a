#include "app/program_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace quorvel {

std::filesystem::path programFolder(const std::string& wanted)
{
    if (!wanted.empty()) return std::filesystem::absolute(wanted);
    const QDir own(QCoreApplication::applicationDirPath());
    return QFileInfo(own.path()).isWritable() ? own.filesystemPath() : usersFolder(own);
}

std::filesystem::path usersFolder(const QDir& own)
{
    const QDir shared(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    const QDir users(shared.filePath(kProgramName));
    users.mkpath(QStringLiteral("."));
    const auto readme = QStringLiteral("readme.txt");
    if (!users.exists(readme)) QFile::copy(own.filePath(readme), users.filePath(readme));
    return users.filesystemPath();
}

} // namespace quorvel
