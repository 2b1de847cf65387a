#pragma once

#include "link/line_settings.h"

#include <cstddef>
#include <string>
#include <string_view>

#include <windows.h>

namespace quorvel::link {

/// A serial port of Windows: held exclusively, without handshake, and nothing here waits for the line. Who owns one waits
/// for its two events.
class ComPort {
public:
    enum class Trouble {
        None,
        Missing,    ///< there is no such port (any more)
        InUse,      ///< another program has it
        Refused,    ///< another program has it, or this user may not use it: Windows does not say which
        NotAllowed, ///< this user may not use it
        Unusable,   ///< it is not a serial port, or cannot be set to this line
    };

    /// Opens "COM3", or any other name that the system's list of ports has; isOpen() says whether it could.
    ComPort(const std::wstring& name, const LineSettings& line);
    ~ComPort();
    ComPort(const ComPort&) = delete;
    ComPort& operator=(const ComPort&) = delete;

    bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    /// What Windows said (GetLastError()) when the port could not be opened or vanished; 0 while all is well.
    DWORD error() const { return error_; }
    /// The meaning of error() after opening.
    Trouble trouble() const;

    /// Set while receive() has something to do: characters came, or the port vanished.
    HANDLE arrived() const { return reading_.hEvent; }
    /// Set while sendOn() has something to do.
    HANDLE sent() const { return writing_.hEvent; }

    /// Takes what has come, up to about kAtOnce characters; empty when nothing has, or the port vanished.
    std::string receive();
    /// Hands characters to the port; what it does not take at once waits here.
    /// @return false when the port vanished or so much waits already that it takes none.
    bool send(std::string_view characters);
    /// Hands over what waits. @return false when the port vanished.
    bool sendOn();

private:
    static constexpr std::size_t kAtOnce = 65536;
    static constexpr std::size_t kWaiting = 65536;

    bool configure(const LineSettings& line);
    void listen();
    std::string held();
    DWORD outcome(OVERLAPPED& operation, DWORD& count);
    void lose(DWORD error);
    void settle(OVERLAPPED& operation, bool& pending);

    HANDLE handle_ = INVALID_HANDLE_VALUE;
    DWORD error_ = ERROR_SUCCESS;
    OVERLAPPED reading_{}, draining_{}, writing_{};
    bool isReading_ = false;
    bool isWriting_ = false;
    int emptyReads_ = 0;
    char character_ = 0; ///< where the character that listen() waits for comes in
    std::string leaving_, waiting_;
};

} // namespace quorvel::link
