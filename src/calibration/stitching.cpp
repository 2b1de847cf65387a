#include "calibration/stitching.h"

#include "text/reply.h"

namespace quorvel::calibration {

namespace {

constexpr std::size_t kLocationLength = 4;
constexpr int kLocationPosition = 8;

} // namespace

std::string locationQueryFrame(std::string_view addressDigits)
{
    return text::withLineEnd(":" + std::string(addressDigits) + "7822FF");
}

std::string locationSetFrame(std::string_view addressDigits, std::string_view typed)
{
    return text::withLineEnd(":" + std::string(addressDigits) + "7821" + std::string(typed) + "FF");
}

bool isLocation(std::string_view typed) { return text::trimBlanks(typed).size() == kLocationLength; }

std::string locationOf(std::string_view reply)
{
    return std::string(text::mid(reply, kLocationPosition, kLocationLength));
}

bool locationTaken(std::string_view frame, std::string_view reply)
{
    return text::echoes(frame, reply, kStitchingEchoLength);
}

} // namespace quorvel::calibration
