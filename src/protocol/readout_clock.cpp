#include "protocol/readout_clock.h"

#include "link/bytes.h"
#include "protocol/command.h"
#include "text/reply.h"

namespace quorvel::protocol {

namespace {

constexpr int kDate = 0; // fields of the command
constexpr int kTime = 1;

/// The three pairs of digits of a field.
std::string pairs(std::string_view field, const char* separator)
{
    std::string joined;
    for (int position = 1; position <= 5; position += 2) {
        joined.append(position == 1 ? "" : separator).append(text::mid(field, position, 2));
    }
    return joined;
}

} // namespace

link::Transaction clockQuery(std::string_view addressDigits)
{
    return transaction(CommandId::QueryClock, addressDigits);
}

link::Transaction clockSet(std::string_view addressDigits, const QDateTime& time)
{
    return transaction(CommandId::SetClock, addressDigits,
                       time.toString(QStringLiteral("yyMMddHHmmss")).toStdString());
}

std::string clockText(std::string_view reply)
{
    return "20" + pairs(field(CommandId::QueryClock, kDate, reply), "-") + "  " +
           pairs(field(CommandId::QueryClock, kTime, reply), ":");
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

} // namespace quorvel::protocol
