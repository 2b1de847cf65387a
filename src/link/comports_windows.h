#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace quorvel::link {

/// A serial port that Windows lists.
struct ComName {
    std::wstring name;        ///< "COM12"
    std::wstring description; ///< what is plugged in there, as the driver calls it; may be empty
    int number = 0;           ///< behind the first three characters of the name: 12
};

/// The machine's serial ports, in the order of the registry.
/// @param machine  where the list is; a test gives a key of its own.
std::vector<ComName> comPorts(HKEY machine = HKEY_LOCAL_MACHINE);

} // namespace quorvel::link
