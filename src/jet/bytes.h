#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

/// Little-endian numbers in byte runs. Reading past the end gives 0 and writing past it does nothing, so that no
/// number taken from a file can lead outside the bytes at hand.
namespace quorvel::jet {

using Bytes = std::span<const std::uint8_t>;
using MutableBytes = std::span<std::uint8_t>;
using ByteVector = std::vector<std::uint8_t>;

/// One page of a Jet 4 file.
inline constexpr std::size_t kPageSize = 4096;
using Page = std::array<std::uint8_t, kPageSize>;

template<class T>
T getNumber(Bytes bytes, std::size_t at)
{
    T number = 0;
    if (at > bytes.size() || bytes.size() - at < sizeof(T)) return number;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&number, bytes.data() + at, sizeof(T));
    } else {
        for (std::size_t i = sizeof(T); i-- > 0;) {
            number = static_cast<T>((number << 8) | bytes[at + i]);
        }
    }
    return number;
}

inline std::uint8_t get8(Bytes bytes, std::size_t at) { return at < bytes.size() ? bytes[at] : 0; }
inline std::uint16_t get16(Bytes bytes, std::size_t at) { return getNumber<std::uint16_t>(bytes, at); }
inline std::uint32_t get32(Bytes bytes, std::size_t at) { return getNumber<std::uint32_t>(bytes, at); }
inline std::uint64_t get64(Bytes bytes, std::size_t at) { return getNumber<std::uint64_t>(bytes, at); }

template<class T>
void putNumber(MutableBytes bytes, std::size_t at, T number)
{
    if (at > bytes.size() || bytes.size() - at < sizeof(T)) return;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(number >> (8 * i));
    }
}

inline void put8(MutableBytes bytes, std::size_t at, std::uint8_t number)
{
    if (at < bytes.size()) bytes[at] = number;
}
inline void put16(MutableBytes bytes, std::size_t at, std::uint16_t number) { putNumber(bytes, at, number); }
inline void put32(MutableBytes bytes, std::size_t at, std::uint32_t number) { putNumber(bytes, at, number); }
inline void put64(MutableBytes bytes, std::size_t at, std::uint64_t number) { putNumber(bytes, at, number); }

/// Copies as much of `source` as fits.
inline void putBytes(MutableBytes bytes, std::size_t at, Bytes source)
{
    if (at >= bytes.size() || source.empty()) return;
    std::memcpy(bytes.data() + at, source.data(), std::min(source.size(), bytes.size() - at));
}

template<class T>
void appendNumber(ByteVector& bytes, T number)
{
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    }
}
inline void append8(ByteVector& bytes, std::uint8_t number) { bytes.push_back(number); }
inline void append16(ByteVector& bytes, std::uint16_t number) { appendNumber(bytes, number); }
inline void append32(ByteVector& bytes, std::uint32_t number) { appendNumber(bytes, number); }
inline void append64(ByteVector& bytes, std::uint64_t number) { appendNumber(bytes, number); }
inline void appendBytes(ByteVector& bytes, Bytes more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Big-endian, as index keys have them.
inline void append32BigEndian(ByteVector& bytes, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }
}

/// `count` bytes from `at` on; what there is when there are fewer.
inline Bytes part(Bytes bytes, std::size_t at, std::size_t count)
{
    if (at >= bytes.size()) return {};
    return bytes.subspan(at, std::min(count, bytes.size() - at));
}

inline double doubleOf(std::uint64_t bits) { return std::bit_cast<double>(bits); }
inline float floatOf(std::uint32_t bits) { return std::bit_cast<float>(bits); }

/// Row pointers: page and slot in one number; 0 is none.
inline std::uint32_t pointerPage(std::uint32_t pointer) { return pointer >> 8; }
inline int pointerSlot(std::uint32_t pointer) { return static_cast<int>(pointer & 0xFF); }
inline std::uint32_t rowPointer(std::uint32_t page, int slot)
{
    return page << 8 | static_cast<std::uint32_t>(slot);
}

} // namespace quorvel::jet
