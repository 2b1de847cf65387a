#pragma once

#include "link/bench.h"
#include "link/module1.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The talk of reading a sensor's pixels.
///
/// A reply runs up to its line feed. Counted from 1, X and Y on the left, Z1 and Z2 on the right:
///
///     1      ":"                            1      ":"
///     2-3    address                        2-3    address
///     4-5    "65" or "66"                   4-7    "7803" or "7804"
///     6-9    N, four hex digits             8-11   N, four hex digits
///     10-    N pixels, two hex digits each  12-    N pixels, two hex digits each
///     last 4 "FF", CR, LF                   last 4 "FF", CR, LF
namespace quorvel::grayscale {

/// One direction: what is sent, how its reply is laid out, and how its reading ends when something is wrong. The
/// directions differ on purpose; each difference is a cell of kDirections.
struct Direction {
    std::string_view name;    ///< in the menu and in the chart's title
    std::string_view command; ///< digits behind the address, "FF" included
    std::string_view echo;    ///< what stands from position 4 on in a good reply
    int countAt;              ///< position of N
    int firstPixelAt;         ///< position of the first pixel
    int besidesPixels;        ///< characters of a good reply that are no pixels, line feed included
    bool needsAddress;        ///< an empty address is refused; else it is sent as "00"
    bool closesWithoutPort;   ///< a closed port closes the window after the message
    /// Said when the reply is malformed, and the buttons stay disabled; empty: nothing is said, the reading counts as
    /// done, and the pixels stay as they were.
    std::string_view malformed;
};

inline constexpr Direction kDirections[] = {
    {"X", "65FF", "65", 6, 10, 13, true, true, "灰度数据位数不准确！"},
    {"Y", "66FF", "66", 6, 10, 13, false, false, "The GrayScale data is error!"},
    {"Z1", "7803FF", "7803", 8, 12, 15, true, true, ""},
    {"Z2", "7804FF", "7804", 8, 12, 15, true, true, ""},
};

inline constexpr std::string_view kNoAddress = "Please input the sensor No!";

/// The direction of that name; null for any other text.
const Direction* findDirection(std::string_view name);

/// Pixels are kept under the indices 1 to this.
inline constexpr int kHighestIndex = 20000;

/// The pixels last read. A shorter reading leaves the older values above it as they are.
class PixelArray {
public:
    /// Element 0 is the count N, 0 to kHighestIndex; elements 1 to N are the pixels, 0 to 255.
    /// @param index  0 to kHighestIndex.
    std::int16_t operator[](int index) const { return elements_[static_cast<std::size_t>(index)]; }
    int count() const { return elements_[0]; }
    /// The N pixels.
    std::span<const std::int16_t> pixels() const
    {
        return std::span(elements_).subspan(1, static_cast<std::size_t>(count()));
    }
    /// Takes over a reading of at most kHighestIndex pixels.
    void store(std::span<const std::int16_t> pixels);

private:
    std::vector<std::int16_t> elements_ = std::vector<std::int16_t>(kHighestIndex + 1);
};

/// The frame that asks the readout of these two address digits, line end included.
std::string frame(const Direction& direction, std::string_view addressDigits);

/// Reads a reply into the array.
/// @return false, with the array untouched, when the reply is malformed: another command is echoed, its length is
///         not that of N pixels, N is no number or above kHighestIndex, or a pixel is not two hex digits.
bool readReply(const Direction& direction, std::string_view reply, PixelArray& array);

/// How far a reply has come in.
struct Progress {
    int received = 0;  ///< whole pixels
    int expected = -1; ///< N as announced; -1 while it is not known, or out of range
};
Progress progress(const Direction& direction, std::string_view received);

/// How a transaction ended.
enum class Outcome { Read, NoReply, Malformed };

/// The whole transaction: what waits is thrown away, the frame goes out, the reply comes in. The array changes only
/// when the outcome is Read. The port must be open.
Outcome fetch(link::Module1& module1, const Direction& direction, std::string_view addressDigits,
              PixelArray& array);

} // namespace quorvel::grayscale
