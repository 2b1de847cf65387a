#include "link/serialport.h"

#include <QSerialPort>

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

std::unique_ptr<QSerialPort> closedPort(const QString& name, const LineSettings& line)
{
    auto port = std::make_unique<QSerialPort>(name);
    port->setBaudRate(line.baud);
    port->setParity(parityOf(line.parity));
    port->setDataBits(static_cast<QSerialPort::DataBits>(line.dataBits));
    port->setStopBits(line.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop);
    port->setFlowControl(QSerialPort::NoFlowControl);
    return port;
}

OpenedDevice openedPort(std::unique_ptr<QSerialPort> port, const LineSettings& line)
{
    switchModemLines(*port, line);
    announceLoss(*port);
    return {std::move(port), {}};
}

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
