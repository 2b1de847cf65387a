#include "sim/transport.h"

#include "sim/descriptor.h"

#include <cerrno>
#include <cstring>

namespace quorvelsim {

std::string readAvailable(int descriptor, bool& ended)
{
    char buffer[512];
    for (;;) {
        const auto count = ::read(descriptor, buffer, sizeof buffer);
        if (count > 0) return {buffer, static_cast<std::size_t>(count)};
        if (count < 0 && errno == EINTR) continue;
        ended = count == 0 || errno != EAGAIN;
        return {};
    }
}

std::string systemError(const std::string& what) { return what + ": " + std::strerror(errno); }

void Transport::send(std::string_view characters)
{
    if (output() < 0) return;
    pending_.append(characters.substr(0, kPending - std::min(kPending, pending_.size())));
    flush();
}

void Transport::flush()
{
    while (output() >= 0 && !pending_.empty()) {
        const auto count = ::write(output(), pending_.data(), pending_.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        pending_.erase(0, static_cast<std::size_t>(count));
    }
}

} // namespace quorvelsim
