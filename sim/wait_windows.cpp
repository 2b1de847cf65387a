#include "sim/wait.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <mutex>
#include <thread>
#include <utility>

#include <winsock2.h>

namespace quorvelsim {

namespace {

// Of newer headers: a timer that does not wait for the next tick of the clock, up to 15.6 ms away. Windows 10 has it.
constexpr DWORD kHighResolution = 0x2;

std::atomic<bool> askedToStop = false;

/// What others wake the server with. Made once, and kept until the program has ended: the threads that use it may live
/// as long.
struct Bells {
    HANDLE stop = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE line = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE device = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE time = newTimer();

    static HANDLE newTimer()
    {
        const HANDLE timer = ::CreateWaitableTimerExW(nullptr, nullptr, kHighResolution, TIMER_ALL_ACCESS);
        return timer != nullptr ? timer : ::CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_ALL_ACCESS);
    }
};

Bells& bells()
{
    static auto* const all = new Bells; // NOLINT(cppcoreguidelines-owning-memory)
    return *all;
}

BOOL WINAPI askStop(DWORD /*event*/)
{
    askedToStop = true;
    ::SetEvent(bells().stop);
    return TRUE;
}

/// Standard input, which only a thread of its own can read without holding up everything else.
class Input {
public:
    static Input& instance()
    {
        static auto* const input = new Input; // NOLINT(cppcoreguidelines-owning-memory)
        return *input;
    }

    std::optional<std::string> take()
    {
        const std::lock_guard lock(mutex_);
        if (text_.empty() && ended_) return std::nullopt;
        if (!ended_) ::ResetEvent(bells().line);
        return std::exchange(text_, {});
    }

private:
    Input()
    {
        std::thread([this] { read(); }).detach();
    }

    void read()
    {
        const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
        std::array<char, 4096> buffer{};
        for (;;) {
            DWORD count = 0;
            const bool more =
                ::ReadFile(input, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) != 0 &&
                count > 0;
            const std::lock_guard lock(mutex_);
            text_.append(buffer.data(), count);
            ended_ = !more;
            ::SetEvent(bells().line);
            if (ended_) return;
        }
    }

    std::mutex mutex_;
    std::string text_;
    bool ended_ = false;
};

/// Has a bell ring for the sockets. @return true when there is something to do already.
bool watchSockets(const std::vector<Watch>& watches)
{
    std::vector<WSAPOLLFD> sockets;
    sockets.reserve(watches.size());
    ::ResetEvent(bells().device);
    for (const auto& watch : watches) {
        const auto socket = static_cast<SOCKET>(watch.number);
        // Room to write, asked for without need, would ring all the time.
        const long writing = watch.toWrite ? FD_WRITE : 0;
        ::WSAEventSelect(socket, bells().device, FD_READ | FD_ACCEPT | FD_CLOSE | writing);
        const auto events = static_cast<SHORT>(watch.toWrite ? POLLRDNORM | POLLWRNORM : POLLRDNORM);
        sockets.push_back({socket, events, 0});
    }
    // The bell rings for what is new; what was left over from before is found here.
    return !sockets.empty() && ::WSAPoll(sockets.data(), static_cast<ULONG>(sockets.size()), 0) > 0;
}

} // namespace

void prepareSignals()
{
    bells();
    ::SetConsoleCtrlHandler(askStop, TRUE);
    // The lines are the same as elsewhere.
    ::_setmode(::_fileno(stdout), _O_BINARY);
}

bool stopAsked() { return askedToStop; }

bool waitFor(const std::vector<Watch>& watches, bool control, std::optional<double> seconds)
{
    auto& all = bells();
    std::vector<HANDLE> handles{all.stop};
    if (control) {
        Input::instance();
        handles.push_back(all.line);
    }
    if (!watches.empty()) handles.push_back(all.device);
    if (seconds) {
        LARGE_INTEGER due{};
        due.QuadPart = -static_cast<LONGLONG>(*seconds * 1e7); // from now on, in units of 100 ns
        ::SetWaitableTimer(all.time, &due, 0, nullptr, nullptr, FALSE);
        handles.push_back(all.time);
    }
    const DWORD patience = watchSockets(watches) ? 0 : INFINITE;
    ::WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, patience);
    return control && ::WaitForSingleObject(all.line, 0) == WAIT_OBJECT_0;
}

std::optional<std::string> readControl() { return Input::instance().take(); }

} // namespace quorvelsim
