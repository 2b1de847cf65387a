#include "protocol/schedule.h"

#include "protocol/command.h"
#include "text/number.h"

#include <iterator>

namespace quorvel::protocol {

namespace {

constexpr auto kModeCommand = CommandId::QueryMode;

} // namespace

link::Transaction modeQuery(std::string_view addressDigits)
{
    return transaction(kModeCommand, addressDigits);
}

AutoMode readMode(std::string_view reply)
{
    const auto number = [reply](std::size_t index) {
        return text::integerOf(field(kModeCommand, index, reply));
    };
    return {number(0), {number(1), number(2), number(3), number(4)}};
}

bool isPlainModeReply(std::string_view reply) { return holdsDigitsOnly(kModeCommand, reply); }

std::string modeText(const AutoMode& mode)
{
    const auto value = [&mode](std::size_t index) { return text::general(mode.values[index]); };
    if (mode.isInterval()) {
        return "Current Interval is " + value(0) + " hours " + value(1) + " minutes " + value(2) + " seconds";
    }
    return "Current AutoReading Mode is fixed time every day at " + value(0) + "," + value(1) + "," +
           value(2) + "," + value(3) + " o'clock.";
}

std::string modeQuestion(const AutoMode& mode) { return modeText(mode) + "\r\n" + kChangeMode; }

link::Transaction intervalSet(std::string_view addressDigits, int position)
{
    const bool selected = position >= 0 && position < static_cast<int>(std::size(kIntervals));
    return intervalSet(addressDigits, selected ? kIntervals[position].code : std::string_view());
}

link::Transaction intervalSet(std::string_view addressDigits, std::string_view code)
{
    return transaction(CommandId::SetInterval, addressDigits, code);
}

} // namespace quorvel::protocol
