#include "grayscale/grayscale.h"

#include "text/number.h"
#include "text/reply.h"

#include <algorithm>

namespace quorvel::grayscale {

namespace {

constexpr int kEchoAt = 4;
constexpr int kCountDigits = 4;
constexpr int kPixelDigits = 2;

/// N as the reply announces it; -1 when it is no number or more than the array takes.
int announcedCount(const Direction& direction, std::string_view reply)
{
    const auto digits = text::mid(reply, direction.countAt, kCountDigits);
    if (digits.size() != kCountDigits) return -1;
    const auto count = text::hexNumber(digits);
    return count > kHighestIndex ? -1 : count;
}

} // namespace

const Direction* findDirection(std::string_view name)
{
    const auto* found = std::ranges::find(kDirections, name, &Direction::name);
    return found == std::end(kDirections) ? nullptr : found;
}

void PixelArray::store(std::span<const std::int16_t> pixels)
{
    const auto count = std::min<std::size_t>(pixels.size(), kHighestIndex);
    elements_[0] = static_cast<std::int16_t>(count);
    std::copy_n(pixels.begin(), count, elements_.begin() + 1);
}

std::string frame(const Direction& direction, std::string_view addressDigits)
{
    return text::withLineEnd(":" + std::string(addressDigits) + std::string(direction.command));
}

bool readReply(const Direction& direction, std::string_view reply, PixelArray& array)
{
    const auto echo = text::mid(reply, kEchoAt, static_cast<int>(direction.echo.size()));
    const int count = announcedCount(direction, reply);
    const auto length = kPixelDigits * count + direction.besidesPixels;
    if (echo != direction.echo || count < 0 || reply.size() != static_cast<std::size_t>(length)) return false;
    std::vector<std::int16_t> pixels;
    pixels.reserve(static_cast<std::size_t>(count));
    const auto digits = text::mid(reply, direction.firstPixelAt, kPixelDigits * count);
    for (std::size_t i = 0; i < digits.size(); i += kPixelDigits) {
        const int high = text::hexDigitValue(digits[i]);
        const int low = text::hexDigitValue(digits[i + 1]);
        if (high < 0 || low < 0) return false;
        pixels.push_back(static_cast<std::int16_t>(16 * high + low));
    }
    array.store(pixels);
    return true;
}

Progress progress(const Direction& direction, std::string_view received)
{
    Progress progress;
    progress.expected = announcedCount(direction, received);
    const int digits = static_cast<int>(received.size()) - (direction.firstPixelAt - 1);
    progress.received = std::max(digits, 0) / kPixelDigits;
    if (progress.expected >= 0) progress.received = std::min(progress.received, progress.expected);
    return progress;
}

Outcome fetch(link::Module1& module1, const Direction& direction, std::string_view addressDigits,
              PixelArray& array)
{
    module1.discardInput();
    module1.SendFrame(frame(direction, addressDigits));
    if (!module1.ReceiveGrayscale()) return Outcome::NoReply;
    return readReply(direction, module1.ReplyText(), array) ? Outcome::Read : Outcome::Malformed;
}

} // namespace quorvel::grayscale
