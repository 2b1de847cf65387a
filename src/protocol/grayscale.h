#pragma once

#include "link/transaction.h"
#include "protocol/command.h"
#include "protocol/direction.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

/// Reading a sensor's pixels.
///
/// A reply runs up to its line feed. Counted from 1, X and Y on the left, Z1 and Z2 on the right:
///
///     1      ":"                            1      ":"
///     2-3    address                        2-3    address
///     4-5    "65" or "66"                   4-7    "7803" or "7804"
///     6-9    N, four hex digits             8-11   N, four hex digits
///     10-    N pixels, two hex digits each  12-    N pixels, two hex digits each
///     last 4 "FF", CR, LF                   last 4 "FF", CR, LF
namespace quorvel::protocol {

/// One sensor: what is sent, and how its reading ends when something is wrong. The sensors differ on purpose; each
/// difference is a cell of kGrayscales.
struct GrayscaleRow {
    Sensor sensor;
    CommandId command;
    bool needsAddress;      ///< an empty address is refused; else it is sent as "00"
    bool closesWithoutPort; ///< a closed port closes the window after the message
    /// Said when the reply is malformed, and the buttons stay disabled; empty: nothing is said, the reading counts as
    /// done, and the pixels stay as they were.
    std::string_view malformed;
};

inline constexpr GrayscaleRow kGrayscales[] = {
    {Sensor::X, CommandId::GrayscaleX, true, true, "灰度数据位数不准确！"},
    {Sensor::Y, CommandId::GrayscaleY, false, false, "The GrayScale data is error!"},
    {Sensor::Z1, CommandId::GrayscaleZ1, true, true, ""},
    {Sensor::Z2, CommandId::GrayscaleZ2, true, true, ""},
};

inline constexpr std::string_view kNoAddress = "Please input the sensor No!";

/// The row of the sensor of that name ("X", "Y", "Z1", "Z2"); null for any other text.
const GrayscaleRow* findGrayscale(std::string_view name);

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

/// Asks the readout of these two address digits for the pixels; the reply runs up to its line feed.
link::Transaction grayscaleQuery(const GrayscaleRow& row, std::string_view addressDigits);

/// What a reply held.
struct GrayscaleReply {
    bool good = false;        ///< otherwise the array is untouched
    std::vector<int> damaged; ///< numbers, from 1, of the pixels that were not two hexadecimal digits
};

/// Reads a reply into the array. A pixel that is not two hexadecimal digits takes the number that its field begins
/// with, 0 without one. The reply is malformed, and the array stays untouched, when it echoes another command, its
/// length is not that of N pixels, or N is not four hexadecimal digits or above kHighestIndex.
GrayscaleReply readGrayscale(const GrayscaleRow& row, std::string_view reply, PixelArray& array);

/// How far a reply has come in.
struct GrayscaleProgress {
    int received = 0;   ///< whole pixels
    int expected = -1;  ///< N as announced; -1 while it is not known, or out of range
    bool begun = false; ///< something has come
};
GrayscaleProgress grayscaleProgress(const GrayscaleRow& row, std::string_view received);

} // namespace quorvel::protocol
