#include "link/device.h"

#include <QFileInfo>
#include <QSerialPort>

#include <map>

#include <sys/file.h>
#include <unistd.h>

namespace quorvel::link {

namespace {

const std::map<char, QSerialPort::Parity> kParities = {{'n', QSerialPort::NoParity},
                                                       {'e', QSerialPort::EvenParity},
                                                       {'o', QSerialPort::OddParity},
                                                       {'m', QSerialPort::MarkParity},
                                                       {'s', QSerialPort::SpaceParity}};

QString busy(const QString& name)
{
    return QStringLiteral("%1 is used by another program. Close it and press OpenComm again.").arg(name);
}

QString notAllowed(const QString& name)
{
    const auto group = QFileInfo(name).group();
    return QStringLiteral("You may not use %1. Join the group \"%2\" (sudo usermod -aG %2 YOUR-NAME), log in "
                          "again and press OpenComm again.")
        .arg(name, group.isEmpty() ? QStringLiteral("dialout") : group);
}

QString reasonFor(const QSerialPort& port, const QString& name)
{
    const auto path = QFile::encodeName(name);
    if (::access(path.constData(), F_OK) != 0) {
        return QStringLiteral(
                   "%1 does not exist. Plug the adapter in, refresh the list (F5) and choose it again.")
            .arg(name);
    }
    if (::access(path.constData(), R_OK | W_OK) != 0) return notAllowed(name);
    // The port lock of another program, or the exclusive mode it asked for.
    if (port.error() == QSerialPort::PermissionError) return busy(name);
    return QStringLiteral("%1 cannot be opened as a serial port: %2. Choose another port.")
        .arg(name, port.errorString());
}

/// Pseudo-terminals and some adapters have no modem lines; the bus does not need them.
void switchModemLines(QSerialPort& port, const LineSettings& line)
{
    if (line.rts && !port.setRequestToSend(true)) qInfo("%s: no RTS line", qPrintable(port.portName()));
    if (line.dtr && !port.setDataTerminalReady(true)) qInfo("%s: no DTR line", qPrintable(port.portName()));
}

void announceLoss(QSerialPort& port)
{
    QObject::connect(&port, &QSerialPort::errorOccurred, &port, [&port](QSerialPort::SerialPortError error) {
        switch (error) {
        case QSerialPort::ResourceError:
        case QSerialPort::ReadError:
        case QSerialPort::WriteError:
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

} // namespace

OpenedDevice openSerialPort(const QString& name, const LineSettings& line)
{
    auto port = std::make_unique<QSerialPort>(name);
    // Everything is set before opening: a pseudo-terminal refuses some changes afterwards.
    port->setBaudRate(line.baud);
    port->setParity(kParities.at(line.parity));
    port->setDataBits(static_cast<QSerialPort::DataBits>(line.dataBits));
    port->setStopBits(line.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop);
    port->setFlowControl(QSerialPort::NoFlowControl);
    if (!port->open(QIODevice::ReadWrite)) return {nullptr, reasonFor(*port, name)};
    // The terminal's own exclusive mode does not stop a second program of the administrator, and a link to the
    // device has another port lock; this lock belongs to the device itself.
    if (::flock(port->handle(), LOCK_EX | LOCK_NB) != 0) return {nullptr, busy(name)};
    switchModemLines(*port, line);
    announceLoss(*port);
    return {std::move(port), {}};
}

} // namespace quorvel::link
