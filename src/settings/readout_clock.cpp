#include "settings/readout_clock.h"

#include "link/bytes.h"
#include "text/reply.h"

namespace quorvel::settings {

namespace {

constexpr int kClockReply = 21;
constexpr int kDatePosition = 6;
constexpr int kTimePosition = 12;

std::string parts(std::string_view reply, int position, const char* separator)
{
    std::string joined;
    for (int i = 0; i < 3; ++i) {
        joined.append(i == 0 ? "" : separator).append(text::mid(reply, position + 2 * i, 2));
    }
    return joined;
}

} // namespace

Exchange clockQuery(std::string_view addressDigits)
{
    return {.frame = frameOf(addressDigits, "04FF"), .replyLength = kClockReply, .drains = false};
}

Exchange clockSet(std::string_view addressDigits, const QDateTime& time)
{
    const auto digits = time.toString(QStringLiteral("yyMMddHHmmss")).toStdString();
    return {
        .frame = frameOf(addressDigits, "03" + digits + "FF"), .replyLength = kClockReply, .drains = false};
}

std::string clockText(std::string_view reply)
{
    return "20" + parts(reply, kDatePosition, "-") + "  " + parts(reply, kTimePosition, ":");
}

std::optional<QDateTime> clockOf(std::string_view reply)
{
    const auto time =
        QDateTime::fromString(link::shown(clockText(reply)), QStringLiteral("yyyy-MM-dd  HH:mm:ss"));
    return time.isValid() ? std::optional(time) : std::nullopt;
}

std::string clockQuestion(std::string_view reply)
{
    return "Current time is " + clockText(reply) +
           ".\r\nAre you sure to change Pendulum's RTC time same as PC'time?";
}

} // namespace quorvel::settings
