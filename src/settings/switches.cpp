#include "settings/switches.h"

namespace quorvel::settings {

namespace {

constexpr int kSwitchReply = 13;
constexpr int kSwitchEcho = 9;
constexpr int kSwitchPosition = 8;

} // namespace

Exchange switchSet(const SwitchRow& row, std::string_view addressDigits, bool on)
{
    const auto command = std::string(row.setCode).append(on ? "01FF" : "00FF");
    return {.frame = frameOf(addressDigits, command), .replyLength = kSwitchReply, .echoLength = kSwitchEcho};
}

Exchange switchQuery(const SwitchRow& row, std::string_view addressDigits)
{
    return {.frame = frameOf(addressDigits, row.queryCommand), .replyLength = kSwitchReply};
}

std::optional<bool> switchStateOf(std::string_view reply) { return flagAt(reply, kSwitchPosition); }

} // namespace quorvel::settings
