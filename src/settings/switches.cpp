#include "settings/switches.h"

#include "text/reply.h"

namespace quorvel::settings {

namespace {

constexpr int kReplyLength = 13;
constexpr int kEchoLength = 9;
constexpr int kStatePosition = 8;

} // namespace

Exchange switchSet(const SwitchRow& row, std::string_view addressDigits, bool on)
{
    const auto command = std::string(row.setCode).append(on ? "01FF" : "00FF");
    return {.frame = frameOf(addressDigits, command), .replyLength = kReplyLength, .echoLength = kEchoLength};
}

Exchange switchQuery(const SwitchRow& row, std::string_view addressDigits)
{
    return {.frame = frameOf(addressDigits, row.queryCommand), .replyLength = kReplyLength};
}

std::optional<bool> switchStateOf(std::string_view reply)
{
    const auto state = text::mid(reply, kStatePosition, 2);
    if (state == "01") return true;
    if (state == "00") return false;
    return std::nullopt;
}

} // namespace quorvel::settings
