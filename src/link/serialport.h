#pragma once

#include "link/device.h"

#include <QString>

#include <memory>

class QSerialPort;

/// What opening a serial port has in common on all platforms.
namespace quorvel::link {

/// A serial port that is still closed. Everything is set before opening: a pseudo-terminal refuses some changes
/// afterwards.
std::unique_ptr<QSerialPort> closedPort(const QString& name, const LineSettings& line);

/// The verdict on a port that could be opened: switches its modem lines on as asked, and has it announce its loss.
OpenedDevice openedPort(std::unique_ptr<QSerialPort> port, const LineSettings& line);

// The reasons why a port cannot be opened, each with the next step.
QString missingText(const QString& name);
QString inUseText(const QString& name);
/// @param group  who may use the port; empty when that is not known; "dialout" is named then.
QString notAllowedText(const QString& name, const QString& group);
/// @param why  what the platform says.
QString unusableText(const QString& name, const QString& why);

} // namespace quorvel::link
