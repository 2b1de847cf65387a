#include "link/portlist.h"

#include <QSerialPortInfo>

namespace quorvel::link {

// Qt leaves out the ttyS entries that the kernel keeps for ports without hardware.
std::vector<PortInfo> enumeratePorts()
{
    std::vector<PortInfo> ports;
    for (const auto& info : QSerialPortInfo::availablePorts()) {
        ports.push_back({info.systemLocation(), info.description(), {}, info.serialNumber()});
    }
    sortPorts(ports);
    return ports;
}

} // namespace quorvel::link
