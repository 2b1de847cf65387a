#include "sim/descriptor.h"
#include "sim/transport.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace quorvelsim {

namespace {

/// A closing is told before it is done; this long (ms) it may take until the terminal knows of it.
constexpr std::chrono::milliseconds kLeaving(10);

/// A pseudo-terminal. Clients open its slave side; the readouts sit at the master side.
///
/// A terminal that a client locked (TIOCEXCL) and left without unlocking, killed perhaps, stays locked for
/// everybody but root for as long as the master lives. Only a descriptor of the slave side can unlock it, so
/// one is kept (`keeper_`). It hides from the master whether a client is there; therefore the directory entry
/// is watched, and whenever somebody closes it the keeper steps aside for a moment to see whether he was the
/// last one. A client that locks the terminal in just that moment keeps the keeper out; killed, it leaves the
/// terminal locked.
class PtyTransport : public Transport {
public:
    /// @return the reason why there is no pseudo-terminal; empty when there is one.
    std::string open()
    {
        master_ = Descriptor(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        if (!master_.isOpen() || ::grantpt(master_.get()) != 0 || ::unlockpt(master_.get()) != 0)
            return systemError("no pseudo-terminal could be made");
        char path[128];
        if (::ptsname_r(master_.get(), path, sizeof path) != 0)
            return systemError("the pseudo-terminal has no name");
        path_ = path;
        if (!openKeeper()) return systemError(path_ + " could not be opened");
        notifier_ = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        if (!watchEntry(IN_OPEN | IN_CLOSE)) return systemError(path_ + " could not be watched");
        return {};
    }

    [[nodiscard]] std::string name() const override { return path_; }

    void watch(std::vector<Watch>& watches) const override
    {
        watches.push_back({notifier_.get(), false});
        // Without the keeper and without a client the master would report its hang-up without end.
        if (keeper_.isOpen() || client_) watches.push_back({master_.get(), isPending()});
    }

    std::string receive() override
    {
        const bool closed = readEvents();
        bool ended = false;
        auto characters = readAvailable(master_.get(), ended);
        // A client that opens while checkClients() looks away is seen at the latest when it writes.
        const bool unseen = !client_ && !characters.empty();
        if (closed || unseen || (ended && client_)) checkClients();
        return characters;
    }

protected:
    [[nodiscard]] bool hasClient() const override { return client_; }
    std::size_t write(std::string_view characters) override
    {
        return writeAvailable(master_.get(), characters);
    }

private:
    bool openKeeper()
    {
        keeper_ = Descriptor(::open(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        return keeper_.isOpen() && makeRaw();
    }

    bool makeRaw() const
    {
        termios settings{};
        if (::tcgetattr(keeper_.get(), &settings) != 0) return false;
        ::cfmakeraw(&settings);
        ::cfsetspeed(&settings, B9600);
        return ::tcsetattr(keeper_.get(), TCSANOW, &settings) == 0;
    }

    /// Asks to be told of these doings with the terminal, instead of those asked for before.
    bool watchEntry(std::uint32_t doings)
    {
        entry_ = ::inotify_add_watch(notifier_.get(), path_.c_str(), doings);
        return entry_ >= 0;
    }

    /// @return true when somebody has closed the terminal.
    bool readEvents()
    {
        alignas(inotify_event) char buffer[4096];
        bool closed = false;
        for (;;) {
            const auto count = ::read(notifier_.get(), buffer, sizeof buffer);
            if (count <= 0) return closed;
            for (std::size_t at = 0; at + sizeof(inotify_event) <= static_cast<std::size_t>(count);) {
                const auto* event = static_cast<const inotify_event*>(static_cast<const void*>(buffer + at));
                client_ = client_ || (event->mask & IN_OPEN) != 0U;
                closed = closed || (event->mask & IN_CLOSE) != 0U;
                at += sizeof(inotify_event) + event->len;
            }
        }
    }

    /// Finds out whether a client is left, and cleans up behind the last one.
    void checkClients()
    {
        ::inotify_rm_watch(notifier_.get(), entry_); // the keeper's own coming and going is no news
        int locked = 0;
        if (keeper_.isOpen()) {
            ::ioctl(keeper_.get(), TIOCGEXCL, &locked);
            ::ioctl(keeper_.get(), TIOCNXCL);
        }
        keeper_.close();
        watchEntry(IN_CLOSE); // who leaves from here on makes us look again
        pollfd master{master_.get(), 0, 0};
        ::poll(&master, 1, kLeaving.count());
        client_ = (master.revents & POLLHUP) == 0;
        keeper_ = Descriptor(::open(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        watchEntry(IN_OPEN | IN_CLOSE);
        if (client_) {
            if (locked != 0 && keeper_.isOpen()) ::ioctl(keeper_.get(), TIOCEXCL);
            return;
        }
        dropPending();
        if (!keeper_.isOpen()) return;
        makeRaw();
        ::tcflush(keeper_.get(), TCIFLUSH);
    }

    Descriptor master_;
    Descriptor keeper_;
    Descriptor notifier_;
    std::string path_;
    int entry_ = -1;
    bool client_ = false;
};

} // namespace

OpenedTransport openPty()
{
    auto pty = std::make_unique<PtyTransport>();
    auto error = pty->open();
    if (!error.empty()) return {nullptr, std::move(error)};
    return {std::move(pty), {}};
}

} // namespace quorvelsim
