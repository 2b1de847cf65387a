#include "line/linefile.h"

#include <QFile>
#include <QFileInfo>

namespace quorvel::line {

namespace {

/// Whether the end of the last line is missing. Pipes and devices are not looked at: opening them may wait.
bool isCutOff(const QString& name)
{
    QFile file(name);
    if (!QFileInfo(name).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return false;
    char last = '\n';
    return file.size() > 0 && file.seek(file.size() - 1) && file.getChar(&last) && last != '\n';
}

} // namespace

bool openForLines(QFile& file)
{
    const bool cutOff = isCutOff(file.fileName());
    return file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered) &&
           (!cutOff || file.write("\n") == 1);
}

} // namespace quorvel::line
