#include "link/device.h"

#include <QSerialPort>

namespace quorvel::link {

// Windows opens serial ports exclusively by itself, and the registry lists only ports that exist.
OpenedDevice openSerialPort(const QString& name, const LineSettings& line)
{
    auto port = std::make_unique<QSerialPort>(name);
    port->setBaudRate(line.baud);
    port->setParity(line.parity == 'e'   ? QSerialPort::EvenParity
                    : line.parity == 'o' ? QSerialPort::OddParity
                    : line.parity == 'm' ? QSerialPort::MarkParity
                    : line.parity == 's' ? QSerialPort::SpaceParity
                                         : QSerialPort::NoParity);
    port->setDataBits(static_cast<QSerialPort::DataBits>(line.dataBits));
    port->setStopBits(line.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop);
    if (!port->open(QIODevice::ReadWrite)) {
        const auto text =
            port->error() == QSerialPort::PermissionError
                ? QStringLiteral("%1 is used by another program. Close it and press OpenComm again.")
            : port->error() == QSerialPort::DeviceNotFoundError
                ? QStringLiteral("%1 does not exist. Plug the adapter in, refresh the list (F5) and "
                                 "choose it again.")
                : QStringLiteral("%1 cannot be opened as a serial port. Choose another port.");
        return {nullptr, text.arg(name)};
    }
    QObject::connect(port.get(), &QSerialPort::errorOccurred, port.get(),
                     [device = port.get()](QSerialPort::SerialPortError error) {
                         if (error == QSerialPort::ResourceError) Q_EMIT device->readChannelFinished();
                     });
    return {std::move(port), {}};
}

} // namespace quorvel::link
