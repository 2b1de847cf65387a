#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace quorvelsim {

/// Owns a file descriptor; -1 is none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    void close()
    {
        if (descriptor_ >= 0) ::close(descriptor_);
        descriptor_ = -1;
    }
    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

private:
    int descriptor_ = -1;
};

/// What can be read without waiting, at most 512 characters: a client that writes without end gets no more attention
/// than that at a time, and control lines are heard in between.
/// @param ended  set true when nothing is left and the other side has closed or the descriptor is broken.
std::string readAvailable(int descriptor, bool& ended);

/// Writes what can be written without waiting. @return how many characters that were.
std::size_t writeAvailable(int descriptor, std::string_view characters);

/// "what: reason of the last failed call".
std::string systemError(const std::string& what);

} // namespace quorvelsim
