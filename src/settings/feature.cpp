#include "settings/feature.h"

#include "text/reply.h"

namespace quorvel::settings {

namespace {

constexpr int kReplyLength = 11;
constexpr int kEchoLength = 7;
constexpr int kStatePosition = 6;

} // namespace

Exchange featureSet(std::string_view addressDigits, bool on)
{
    return {.frame = frameOf(addressDigits, on ? "7501FF" : "7500FF"),
            .replyLength = kReplyLength,
            .echoLength = kEchoLength,
            .drains = false,
            .ignoresBlanks = true};
}

Exchange featureQuery(std::string_view addressDigits)
{
    return {.frame = frameOf(addressDigits, "76FF"), .replyLength = kReplyLength, .drains = false};
}

bool featureIsOn(std::string_view reply) { return text::mid(reply, kStatePosition, 2) != "00"; }

} // namespace quorvel::settings
