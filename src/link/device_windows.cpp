#include "link/serialport.h"

#include <QSerialPort>

namespace quorvel::link {

namespace {

QString reasonFor(const QSerialPort& port, const QString& name)
{
    switch (port.error()) {
    case QSerialPort::DeviceNotFoundError:
        return missingText(name);
    case QSerialPort::PermissionError:
        return inUseText(name);
    default:
        return unusableText(name, port.errorString());
    }
}

} // namespace

// Windows opens serial ports exclusively by itself.
OpenedDevice openSerialPort(const QString& name, const LineSettings& line)
{
    auto port = closedPort(name, line);
    if (!port->open(QIODevice::ReadWrite)) return {nullptr, reasonFor(*port, name)};
    return openedPort(std::move(port), line);
}

// Windows asks for signs of life after the time that its administrator has set, two hours at first.
void watchConnection(qintptr /*socket*/) {}

} // namespace quorvel::link
