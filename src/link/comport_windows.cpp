#include "link/comport_windows.h"

#include <algorithm>
#include <utility>

namespace quorvel::link {

namespace {

// Ports above COM9 have no name but in this folder.
constexpr std::wstring_view kDevices = L"\\\\.\\";

constexpr DWORD kInputBuffer = 65536; // asked of the driver
constexpr DWORD kOutputBuffer = 4096;
constexpr DWORD kPatience = 100; // ms, for what has to end at once
constexpr int kMostEmptyReads = 100;

constexpr DWORD kNoSuchDevice = 433; // ERROR_NO_SUCH_DEVICE of newer headers

BYTE parityOf(char letter)
{
    switch (letter) {
    case 'e':
        return EVENPARITY;
    case 'o':
        return ODDPARITY;
    case 'm':
        return MARKPARITY;
    case 's':
        return SPACEPARITY;
    default:
        return NOPARITY;
    }
}

HANDLE newEvent() { return ::CreateEventW(nullptr, TRUE, FALSE, nullptr); }

} // namespace

ComPort::ComPort(const std::wstring& name, const LineSettings& line)
{
    const auto path = name.starts_with(kDevices) ? name : std::wstring(kDevices) + name;
    handle_ = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                            FILE_FLAG_OVERLAPPED, nullptr);
    if (isOpen() && configure(line)) {
        for (auto* operation : {&reading_, &draining_, &writing_})
            operation->hEvent = newEvent();
        listen();
        return;
    }
    error_ = ::GetLastError();
    if (isOpen()) ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE));
}

ComPort::~ComPort()
{
    if (!isOpen()) return;
    // A frame's last character may be on its way.
    if (isWriting_) ::WaitForSingleObject(writing_.hEvent, kPatience);
    ::CancelIoEx(handle_, nullptr);
    // The system writes into these until they have ended.
    settle(reading_, isReading_);
    settle(writing_, isWriting_);
    ::CloseHandle(handle_);
    for (auto* operation : {&reading_, &draining_, &writing_})
        ::CloseHandle(operation->hEvent);
}

ComPort::Trouble ComPort::trouble() const
{
    switch (error_) {
    case ERROR_SUCCESS:
        return Trouble::None;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_DEV_NOT_EXIST:
    case kNoSuchDevice:
    case ERROR_DEVICE_NOT_CONNECTED:
        return Trouble::Missing;
    case ERROR_SHARING_VIOLATION:
    case ERROR_BUSY:
        return Trouble::InUse;
    case ERROR_ACCESS_DENIED:
        return Trouble::Refused;
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_ACCESS_DISABLED_BY_POLICY:
        return Trouble::NotAllowed;
    default:
        return Trouble::Unusable;
    }
}

bool ComPort::configure(const LineSettings& line)
{
    DCB state{};
    state.DCBlength = sizeof state;
    // Fails for what is not a serial port.
    if (::GetCommState(handle_, &state) == 0) return false;
    state.BaudRate = static_cast<DWORD>(line.baud);
    state.ByteSize = static_cast<BYTE>(line.dataBits);
    state.Parity = parityOf(line.parity);
    state.fParity = line.parity != 'n' ? 1 : 0;
    state.StopBits = line.stopBits == 2 ? TWOSTOPBITS : ONESTOPBIT;
    state.fBinary = 1;
    state.fNull = state.fErrorChar = state.fInX = state.fOutX = 0;
    state.fOutxCtsFlow = state.fOutxDsrFlow = state.fDsrSensitivity = 0;
    state.fAbortOnError = 0; // one bad character would end all reading
    // The modem lines stay as the driver has them: some converters are fed by them or turn round by them.
    if (state.fDtrControl == DTR_CONTROL_HANDSHAKE) state.fDtrControl = DTR_CONTROL_ENABLE;
    if (state.fRtsControl == RTS_CONTROL_HANDSHAKE) state.fRtsControl = RTS_CONTROL_ENABLE;
    // Without time-outs a read ends when its one character has come.
    COMMTIMEOUTS none{};
    if (::SetCommState(handle_, &state) == 0 || ::SetCommTimeouts(handle_, &none) == 0) return false;
    ::SetupComm(handle_, kInputBuffer, kOutputBuffer);
    ::PurgeComm(handle_, PURGE_RXCLEAR | PURGE_TXCLEAR);
    // Some adapters have no modem lines; the bus does not need them.
    if (line.rts) ::EscapeCommFunction(handle_, SETRTS);
    if (line.dtr) ::EscapeCommFunction(handle_, SETDTR);
    return true;
}

void ComPort::listen()
{
    isReading_ =
        ::ReadFile(handle_, &character_, 1, nullptr, &reading_) != 0 || ::GetLastError() == ERROR_IO_PENDING;
    if (!isReading_) lose(::GetLastError());
}

std::string ComPort::receive()
{
    std::string come;
    while (isReading_ && error_ == ERROR_SUCCESS && come.size() < kAtOnce) {
        DWORD got = 0;
        const DWORD why = outcome(reading_, got);
        if (why == ERROR_IO_INCOMPLETE) break;
        isReading_ = false;
        if (why != ERROR_SUCCESS) {
            lose(why);
            break;
        }
        emptyReads_ = got == 0 ? emptyReads_ + 1 : 0;
        if (got > 0) come += character_ + held();
        if (emptyReads_ > kMostEmptyReads) {
            lose(ERROR_GEN_FAILURE); // it would go on without end
        } else if (error_ == ERROR_SUCCESS) {
            listen();
        }
    }
    return come;
}

/// What the driver holds behind the character that listen() waited for.
std::string ComPort::held()
{
    COMSTAT state{};
    DWORD faults = 0;
    if (::ClearCommError(handle_, &faults, &state) == 0 || state.cbInQue == 0) return {};
    std::string characters(std::min<std::size_t>(state.cbInQue, kAtOnce), '\0');
    DWORD got = 0;
    bool pending = ::ReadFile(handle_, characters.data(), static_cast<DWORD>(characters.size()), nullptr,
                              &draining_) != 0 ||
                   ::GetLastError() == ERROR_IO_PENDING;
    if (pending && ::WaitForSingleObject(draining_.hEvent, kPatience) != WAIT_OBJECT_0)
        ::CancelIoEx(handle_, &draining_);
    // A cancelled read has its number of characters, too.
    if (pending) ::GetOverlappedResult(handle_, &draining_, &got, TRUE);
    characters.resize(got);
    return characters;
}

bool ComPort::send(std::string_view characters)
{
    if (error_ != ERROR_SUCCESS || waiting_.size() + characters.size() > kWaiting) return false;
    waiting_ += characters;
    return sendOn();
}

bool ComPort::sendOn()
{
    while (error_ == ERROR_SUCCESS) {
        if (isWriting_) {
            DWORD put = 0;
            const DWORD why = outcome(writing_, put);
            if (why == ERROR_IO_INCOMPLETE) return true;
            isWriting_ = false;
            if (why != ERROR_SUCCESS || put == 0) {
                lose(why != ERROR_SUCCESS ? why : ERROR_WRITE_FAULT);
                break;
            }
            waiting_.insert(0, leaving_, put);
        }
        if (waiting_.empty()) {
            ::ResetEvent(writing_.hEvent);
            return true;
        }
        leaving_ = std::exchange(waiting_, {});
        isWriting_ = ::WriteFile(handle_, leaving_.data(), static_cast<DWORD>(leaving_.size()), nullptr,
                                 &writing_) != 0 ||
                     ::GetLastError() == ERROR_IO_PENDING;
        if (!isWriting_) lose(::GetLastError());
    }
    return false;
}

/// How an operation ended; ERROR_IO_INCOMPLETE while it goes on.
DWORD ComPort::outcome(OVERLAPPED& operation, DWORD& count)
{
    return ::GetOverlappedResult(handle_, &operation, &count, FALSE) != 0 ? ERROR_SUCCESS : ::GetLastError();
}

/// From now on nothing is received or sent.
void ComPort::lose(DWORD error)
{
    error_ = error;
    if (!isReading_) ::ResetEvent(reading_.hEvent);
    if (!isWriting_) ::ResetEvent(writing_.hEvent);
}

/// Waits for the end of an operation that was cancelled.
void ComPort::settle(OVERLAPPED& operation, bool& pending)
{
    DWORD done = 0;
    if (std::exchange(pending, false)) ::GetOverlappedResult(handle_, &operation, &done, TRUE);
}

} // namespace quorvel::link
