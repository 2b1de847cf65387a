#include "link/device.h"
#include "link/serialport.h"

#include <QFileInfo>
#include <QSerialPort>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quorvel::link {

namespace {

/// The parity of a letter that parsed line settings can hold.
QSerialPort::Parity parityOf(char letter)
{
    switch (letter) {
    case 'e':
        return QSerialPort::EvenParity;
    case 'o':
        return QSerialPort::OddParity;
    case 'm':
        return QSerialPort::MarkParity;
    case 's':
        return QSerialPort::SpaceParity;
    default:
        return QSerialPort::NoParity;
    }
}

/// Pseudo-terminals and some adapters have no modem lines; the bus does not need them.
void switchModemLines(QSerialPort& port, const LineSettings& line)
{
    if (line.rts && !port.setRequestToSend(true)) qInfo("%s: no RTS line", qPrintable(port.portName()));
    if (line.dtr && !port.setDataTerminalReady(true)) qInfo("%s: no DTR line", qPrintable(port.portName()));
}

/// A serial port that can be told why it fails.
class Port final : public QSerialPort {
public:
    using QSerialPort::QSerialPort;
    using QSerialPort::setErrorString;
};

/// A read that gives nothing leaves no error behind: what Qt says then is of an earlier call.
void sayThatItHungUp(Port& port)
{
    pollfd line{static_cast<int>(port.handle()), POLLIN, 0};
    if (::poll(&line, 1, 0) == 1 && (line.revents & POLLHUP) != 0)
        port.setErrorString(QObject::tr("unplugged, or closed at its other end"));
}

void announceLoss(Port& port)
{
    QObject::connect(&port, &QSerialPort::errorOccurred, &port, [&port](QSerialPort::SerialPortError error) {
        switch (error) {
        case QSerialPort::ResourceError:
        case QSerialPort::ReadError:
        case QSerialPort::WriteError:
            sayThatItHungUp(port);
            Q_EMIT port.readChannelFinished();
            break;
        case QSerialPort::NoError:
        case QSerialPort::TimeoutError:
            break;
        default:
            qInfo("%s: %s", qPrintable(port.portName()), qPrintable(port.errorString()));
        }
    });
}

/// A serial port that is still closed. Everything is set before opening: a pseudo-terminal refuses some changes
/// afterwards.
std::unique_ptr<Port> closedPort(const QString& name, const LineSettings& line)
{
    auto port = std::make_unique<Port>(name);
    port->setBaudRate(line.baud);
    port->setParity(parityOf(line.parity));
    port->setDataBits(static_cast<QSerialPort::DataBits>(line.dataBits));
    port->setStopBits(line.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop);
    port->setFlowControl(QSerialPort::NoFlowControl);
    return port;
}

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
    switchModemLines(*port, line);
    announceLoss(*port);
    return {std::move(port), {}};
}

void limitSerialBuffer(QIODevice& device, qint64 most)
{
    if (auto* port = qobject_cast<QSerialPort*>(&device)) port->setReadBufferSize(most);
}

void sendSerialNow(QIODevice& device)
{
    if (auto* port = qobject_cast<QSerialPort*>(&device)) port->flush();
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
