#include "link/portlist.h"

#include <QRegularExpression>
#include <QSerialPortInfo>

#include <algorithm>
#include <tuple>

namespace quorvel::link {

namespace {

/// Sorts ttyUSB2 before ttyUSB10.
std::tuple<QString, int, QString> sortKey(const PortInfo& port)
{
    static const QRegularExpression number(QStringLiteral("^(.*?)(\\d+)$"));
    const auto match = number.match(port.device);
    return {match.hasMatch() ? match.captured(1) : port.device, match.captured(2).toInt(), port.device};
}

} // namespace

// Qt leaves out the ttyS entries that the kernel keeps for ports without hardware.
std::vector<PortInfo> enumeratePorts()
{
    std::vector<PortInfo> ports;
    for (const auto& info : QSerialPortInfo::availablePorts()) {
        ports.push_back({info.systemLocation(), info.description(), {}});
    }
    std::sort(ports.begin(), ports.end(),
              [](const PortInfo& a, const PortInfo& b) { return sortKey(a) < sortKey(b); });
    return ports;
}

} // namespace quorvel::link
