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

std::size_t writeAvailable(int descriptor, std::string_view characters)
{
    std::size_t written = 0;
    while (written < characters.size()) {
        const auto rest = characters.substr(written);
        const auto count = ::write(descriptor, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        written += static_cast<std::size_t>(count);
    }
    return written;
}

std::string systemError(const std::string& what) { return what + ": " + std::strerror(errno); }

} // namespace quorvelsim
