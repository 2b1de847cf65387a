#pragma once

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>

namespace quorvel::test {

/// Wakes at the moment in which another program makes files in a folder. A loop that looks again and again would have
/// used up its time on a busy machine just then.
class NewFiles {
public:
    explicit NewFiles(const std::string& folder) : watch_(::inotify_init1(IN_CLOEXEC))
    {
        ::inotify_add_watch(watch_, folder.c_str(), IN_CREATE);
    }
    ~NewFiles() { ::close(watch_); }
    NewFiles(const NewFiles&) = delete;
    NewFiles& operator=(const NewFiles&) = delete;

    /// Waits until so many were made since the watch began, whether or not they are still there.
    /// @return false when the next one was not made for so long.
    bool wait(int count, int milliseconds)
    {
        while (made_ < count) {
            pollfd next{watch_, POLLIN, 0};
            if (::poll(&next, 1, milliseconds) != 1) return false;
            alignas(inotify_event) std::array<char, 4096> events{};
            const auto length = ::read(watch_, events.data(), events.size());
            if (length <= 0) return false;
            for (ssize_t at = 0; at < length; ++made_) {
                inotify_event event{};
                std::memcpy(&event, events.data() + at, sizeof event);
                at += static_cast<ssize_t>(sizeof event + event.len);
            }
        }
        return true;
    }

private:
    int watch_;
    int made_ = 0;
};

} // namespace quorvel::test
