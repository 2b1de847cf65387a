#include "link/serialport.h"

#include <QFileInfo>
#include <QSerialPort>

#include <sys/file.h>
#include <unistd.h>

namespace quorvel::link {

namespace {

/// The path behind a name, as Qt finds it: what does not begin with a folder is in /dev.
QString location(const QString& name)
{
    return name.startsWith(u'/') || name.startsWith(u'.') ? name : QStringLiteral("/dev/") + name;
}

QString reasonFor(const QSerialPort& port, const QString& name)
{
    const auto path = QFile::encodeName(location(name));
    if (::access(path.constData(), F_OK) != 0) return missingText(name);
    if (::access(path.constData(), R_OK | W_OK) != 0)
        return notAllowedText(name, QFileInfo(location(name)).group());
    // The port lock of another program, or the exclusive mode it asked for.
    if (port.error() == QSerialPort::PermissionError) return inUseText(name);
    return unusableText(name, port.errorString());
}

} // namespace

OpenedDevice openSerialPort(const QString& name, const LineSettings& line)
{
    auto port = closedPort(name, line);
    if (!port->open(QIODevice::ReadWrite)) return {nullptr, reasonFor(*port, name)};
    // The terminal's own exclusive mode does not stop a second program of the administrator, and a link to the
    // device has another port lock; this lock belongs to the device itself.
    if (::flock(port->handle(), LOCK_EX | LOCK_NB) != 0) return {nullptr, inUseText(name)};
    return openedPort(std::move(port), line);
}

} // namespace quorvel::link
