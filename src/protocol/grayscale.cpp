#include "protocol/grayscale.h"

#include "text/number.h"
#include "text/reply.h"

#include <algorithm>

namespace quorvel::protocol {

namespace {

constexpr int kEchoPosition = 4;
constexpr int kCountDigits = 4;
constexpr int kPixelDigits = 2;
constexpr std::size_t kCountField = 0;
constexpr std::size_t kPixelsField = 1;

/// N as the reply announces it; -1 when it is not a number or more than the array takes.
int announcedCount(const GrayscaleRow& row, std::string_view reply)
{
    const auto digits = field(row.command, kCountField, reply);
    if (digits.size() != kCountDigits) return -1;
    const auto count = text::hexNumber(digits);
    return count > kHighestIndex ? -1 : count;
}

/// The leading hexadecimal number of a pixel's field.
std::int16_t pixelOf(char high, char low)
{
    const int first = text::hexDigitValue(high);
    const int second = text::hexDigitValue(low);
    if (first < 0) return 0;
    return static_cast<std::int16_t>(second < 0 ? first : 16 * first + second);
}

} // namespace

const GrayscaleRow* findGrayscale(std::string_view name)
{
    const auto* found = std::ranges::find_if(
        kGrayscales, [name](const GrayscaleRow& row) { return nameOf(row.sensor) == name; });
    return found == std::end(kGrayscales) ? nullptr : found;
}

void PixelArray::store(std::span<const std::int16_t> pixels)
{
    const auto count = std::min<std::size_t>(pixels.size(), kHighestIndex);
    elements_[0] = static_cast<std::int16_t>(count);
    std::copy_n(pixels.begin(), count, elements_.begin() + 1);
}

link::Transaction grayscaleQuery(const GrayscaleRow& row, std::string_view addressDigits)
{
    return transaction(row.command, addressDigits);
}

GrayscaleReply readGrayscale(const GrayscaleRow& row, std::string_view reply, PixelArray& array)
{
    const auto& sent = command(row.command);
    const auto echo = text::mid(reply, kEchoPosition, static_cast<int>(sent.digits.size()));
    const int count = announcedCount(row, reply);
    const auto length = kPixelDigits * count + sent.reply.count;
    if (echo != sent.digits || count < 0 || reply.size() != static_cast<std::size_t>(length)) return {};
    GrayscaleReply result{.good = true, .damaged = {}};
    std::vector<std::int16_t> pixels;
    pixels.reserve(static_cast<std::size_t>(count));
    const auto digits =
        field(row.command, kPixelsField, reply).substr(0, kPixelDigits * static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < digits.size(); i += kPixelDigits) {
        const bool hex = text::hexDigitValue(digits[i]) >= 0 && text::hexDigitValue(digits[i + 1]) >= 0;
        if (!hex) result.damaged.push_back(static_cast<int>(i / kPixelDigits) + 1);
        pixels.push_back(pixelOf(digits[i], digits[i + 1]));
    }
    array.store(pixels);
    return result;
}

GrayscaleProgress grayscaleProgress(const GrayscaleRow& row, std::string_view received)
{
    GrayscaleProgress progress;
    progress.begun = !received.empty();
    progress.expected = announcedCount(row, received);
    const auto digits = static_cast<int>(field(row.command, kPixelsField, received).size());
    progress.received = digits / kPixelDigits;
    if (progress.expected >= 0) progress.received = std::min(progress.received, progress.expected);
    return progress;
}

} // namespace quorvel::protocol
