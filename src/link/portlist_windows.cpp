#include "link/comports_windows.h"
#include "link/portlist.h"

namespace quorvel::link {

std::vector<PortInfo> enumeratePorts()
{
    std::vector<PortInfo> ports;
    for (const auto& port : comPorts())
        ports.push_back(
            {QString::fromStdWString(port.name), QString::fromStdWString(port.description), port.number});
    return ports;
}

} // namespace quorvel::link
