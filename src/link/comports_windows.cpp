#include "link/comports_windows.h"

#include "text/number.h"
#include "text/reply.h"

#include <array>
#include <map>

// setupapi.h needs the types of windows.h
#include <setupapi.h>

namespace quorvel::link {

namespace {

constexpr DWORD kLastIndex = 1000;
constexpr DWORD kNameSize = 260;
constexpr DWORD kDataSize = 4096;
constexpr int kNumberPosition = 4; // after "COM", counted from 1

// GUID_DEVCLASS_PORTS of devguid.h, which leaves it to each program to have the constant
constexpr GUID kPorts = {0x4d36e978, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};

/// The digits of a name; other characters, of whatever language, end them.
int numberOf(const std::wstring& name)
{
    std::string plain;
    for (const wchar_t character : name)
        plain += character > 0 && character < 0x80 ? static_cast<char>(character) : '?';
    return text::integerOf(text::mid(plain, kNumberPosition, kDataSize));
}

/// The name that a device's driver has given its port; empty for a printer port.
std::wstring portOf(HDEVINFO devices, SP_DEVINFO_DATA& device)
{
    const HKEY key = ::SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
    if (key == INVALID_HANDLE_VALUE) return {};
    std::array<wchar_t, kNameSize> name{};
    DWORD size = sizeof name;
    const auto read = ::RegGetValueW(key, nullptr, L"PortName", RRF_RT_REG_SZ, nullptr, name.data(), &size);
    ::RegCloseKey(key);
    return read == ERROR_SUCCESS ? name.data() : L"";
}

/// What is plugged in, by the name of its port.
std::map<std::wstring, std::wstring> descriptions()
{
    std::map<std::wstring, std::wstring> found;
    const HDEVINFO devices = ::SetupDiGetClassDevsW(&kPorts, nullptr, nullptr, DIGCF_PRESENT);
    if (devices == INVALID_HANDLE_VALUE) return found;
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof device;
    for (DWORD index = 0; ::SetupDiEnumDeviceInfo(devices, index, &device) != 0; ++index) {
        std::array<wchar_t, kNameSize> words{};
        const auto room = static_cast<DWORD>(sizeof words - sizeof(wchar_t)); // the end may be missing
        if (::SetupDiGetDeviceRegistryPropertyW(devices, &device, SPDRP_DEVICEDESC, nullptr,
                                                reinterpret_cast<BYTE*>(words.data()), room, nullptr) != 0)
            found[portOf(devices, device)] = words.data();
    }
    ::SetupDiDestroyDeviceInfoList(devices);
    return found;
}

} // namespace

std::vector<ComName> comPorts(HKEY machine)
{
    std::vector<ComName> ports;
    HKEY key = nullptr;
    if (::RegOpenKeyExW(machine, L"Hardware\\Devicemap\\SerialComm", 0, KEY_READ, &key) != ERROR_SUCCESS)
        return ports;
    const auto described = descriptions();
    for (DWORD index = 0; index <= kLastIndex; ++index) {
        std::array<wchar_t, kNameSize> name{};
        std::array<wchar_t, kDataSize> data{};
        DWORD nameSize = kNameSize;
        DWORD dataSize = sizeof data - sizeof(wchar_t); // the end may be missing
        DWORD type = 0;
        const auto result = ::RegEnumValueW(key, index, name.data(), &nameSize, nullptr, &type,
                                            reinterpret_cast<BYTE*>(data.data()), &dataSize);
        if (result != ERROR_SUCCESS) break;
        if (type != REG_SZ) continue;
        const std::wstring device = data.data();
        const auto words = described.find(device);
        ports.push_back({device, words == described.end() ? L"" : words->second, numberOf(device)});
    }
    ::RegCloseKey(key);
    return ports;
}

} // namespace quorvel::link
