#include "link/portlist.h"

#include "text/number.h"
#include "text/reply.h"

#include <array>
#include <string>

#include <windows.h>

namespace quorvel::link {

namespace {

constexpr DWORD kLastIndex = 1000;
constexpr DWORD kNameSize = 260;
constexpr DWORD kDataSize = 4096;
constexpr int kNumberPosition = 4; // after "COM", counted from 1

} // namespace

// The registry names every serial port that the machine has; its order is kept.
std::vector<PortInfo> enumeratePorts()
{
    std::vector<PortInfo> ports;
    HKEY key = nullptr;
    if (RegOpenKeyA(HKEY_LOCAL_MACHINE, "Hardware\\Devicemap\\SerialComm", &key) != ERROR_SUCCESS)
        return ports;
    for (DWORD index = 0; index <= kLastIndex; ++index) {
        std::array<char, kNameSize> name{};
        std::array<char, kDataSize> data{};
        DWORD nameSize = kNameSize;
        DWORD dataSize = kDataSize - 1;
        DWORD type = 0;
        const auto result = RegEnumValueA(key, index, name.data(), &nameSize, nullptr, &type,
                                          reinterpret_cast<BYTE*>(data.data()), &dataSize);
        if (result != ERROR_SUCCESS) break;
        if (type != REG_SZ) continue;
        const std::string device = data.data();
        const auto digits = text::mid(device, kNumberPosition, kDataSize);
        ports.push_back({QString::fromLatin1(device.c_str()), {}, text::integerOf(digits)});
    }
    RegCloseKey(key);
    return ports;
}

} // namespace quorvel::link
