#include "link/serialport.h"

namespace quorvel::link {

QString missingText(const QString& name)
{
    return QStringLiteral(
               "%1 does not exist. Plug the adapter in, refresh the list (F5) and choose it again.")
        .arg(name);
}

QString inUseText(const QString& name)
{
    return QStringLiteral("%1 is used by another program. Close it and press OpenComm again.").arg(name);
}

QString notAllowedText(const QString& name, const QString& group)
{
    return QStringLiteral("You may not use %1. Join the group \"%2\" (sudo usermod -aG %2 YOUR-NAME), log in "
                          "again and press OpenComm again.")
        .arg(name, group.isEmpty() ? QStringLiteral("dialout") : group);
}

QString unusableText(const QString& name, const QString& why)
{
    return QStringLiteral("%1 cannot be opened as a serial port: %2. Choose another port.").arg(name, why);
}

} // namespace quorvel::link
