#pragma once

#include "link/line_settings.h"

#include <QIODevice>
#include <QString>

#include <chrono>
#include <memory>

namespace quorvel::link {

/// How long a device server may be unreachable before the connection is given up; for Windows see device_windows.cpp.
inline constexpr auto kSilence = std::chrono::seconds(25);

/// The one verdict on an attempt to open: a device that is open for reading and writing, or the reason in words
/// (what happened and what to do next).
struct OpenedDevice {
    std::unique_ptr<QIODevice> device;
    QString reason;
};

/// Opens a serial port by its device path or COM name, or a serial device server by "tcp:host:port" (an IPv6
/// address is in brackets). The port is held exclusively: a second program is refused.
///
/// A device server that falls silent is asked for a sign of life; without one for about kSilence it counts as gone.
///
/// An open device emits `readChannelFinished` when it vanishes (adapter pulled, connection closed); its
/// errorString() then says why. Never shows a box. Waits up to 5 s for a device server.
OpenedDevice openDevice(const QString& name, const LineSettings& line);

/// Has an open device keep at most so many characters that nobody has read, where the system itself sets no limit.
void limitBuffer(QIODevice& device, qint64 most);

/// Hands what was written to the system; otherwise it would leave with the next turn of the event loop.
void sendNow(QIODevice& device);

/// The reason in words why no device can have this name; empty when one can. Only "tcp:" asks for a form.
QString deviceNameError(const QString& name);

// What of these is for serial ports; one source file per platform.
OpenedDevice openSerialPort(const QString& name, const LineSettings& line);
void limitSerialBuffer(QIODevice& device, qint64 most);
void sendSerialNow(QIODevice& device);

/// Has the system find out within kSilence that the other end of a connection is gone; one source file per platform.
/// @param socket  the system's handle of a connected TCP socket, keep-alive switched on.
void watchConnection(qintptr socket);

} // namespace quorvel::link
