#include "link/serialport.h"

#include <QFileInfo>
#include <QSerialPort>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/file.h>
#include <sys/socket.h>
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

// The first sign of life is asked for after kFirst, then every kNext until kSilence.
constexpr int kFirst = 10; // s
constexpr int kNext = 5;   // s
constexpr int kUnanswered = (static_cast<int>(kSilence.count()) - kFirst) / kNext;

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

void watchConnection(qintptr socket)
{
    const auto set = [socket](int option, int value) {
        ::setsockopt(static_cast<int>(socket), IPPROTO_TCP, option, &value, sizeof value);
    };
    set(TCP_KEEPIDLE, kFirst);
    set(TCP_KEEPINTVL, kNext);
    set(TCP_KEEPCNT, kUnanswered);
    // While something is under way no sign of life is asked for; unconfirmed it would be repeated for a quarter of an
    // hour.
    set(TCP_USER_TIMEOUT, static_cast<int>(std::chrono::milliseconds(kSilence).count()));
}

} // namespace quorvel::link
