#include "main/messages.h"

#include <QFileInfo>

namespace quorvel {

QString ChooseDatabaseFile(Messages& messages, QWidget* parent)
{
    return messages.chooseFile(parent,
                               {QStringLiteral("Database File"), QStringLiteral("Database file(*.mdb)")});
}

QString SaveChartImage(Messages& messages, QWidget* parent)
{
    return messages.chooseFile(parent, {QStringLiteral("Chart Picture"), QStringLiteral("(*.jpg)")});
}

bool mayWrite(Messages& messages, QWidget* parent, const QString& path)
{
    return !QFileInfo::exists(path) ||
           messages.ask(parent, QStringLiteral("File already exists, overwrite this file?"));
}

} // namespace quorvel
