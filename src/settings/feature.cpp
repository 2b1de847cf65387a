#include "settings/feature.h"

namespace quorvel::settings {

namespace {

constexpr int kFeatureReply = 11;
constexpr int kFeatureEcho = 7;
constexpr int kFeaturePosition = 6;

} // namespace

Exchange featureSet(std::string_view addressDigits, bool on)
{
    return {.frame = frameOf(addressDigits, on ? "7501FF" : "7500FF"),
            .replyLength = kFeatureReply,
            .echoLength = kFeatureEcho,
            .drains = false,
            .ignoresBlanks = true};
}

Exchange featureQuery(std::string_view addressDigits)
{
    return {.frame = frameOf(addressDigits, "76FF"), .replyLength = kFeatureReply, .drains = false};
}

bool featureIsOn(std::string_view reply) { return featureStateOf(reply) != false; }

std::optional<bool> featureStateOf(std::string_view reply) { return flagAt(reply, kFeaturePosition); }

} // namespace quorvel::settings
