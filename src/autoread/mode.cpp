#include "autoread/mode.h"

#include "autoread/frame.h"
#include "text/number.h"
#include "text/reply.h"

#include <iterator>

namespace quorvel::autoread {

std::string modeFrame(std::string_view addressDigits) { return commandFrame(addressDigits, "06"); }

AutoMode readMode(std::string_view reply)
{
    const auto field = [reply](int position) { return text::integerOf(text::mid(reply, position, 2)); };
    return {field(6), {field(8), field(10), field(12), field(14)}};
}

bool isPlainModeReply(std::string_view reply)
{
    return reply.size() == kModeReplyLength && reply.front() == ':' && text::mid(reply, 4, 2) == "06" &&
           text::allDigits(text::mid(reply, 6, 10));
}

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

std::string intervalFrame(std::string_view addressDigits, int position)
{
    const bool selected = position >= 0 && position < static_cast<int>(std::size(kIntervals));
    return intervalFrame(addressDigits, selected ? kIntervals[position].code : std::string_view());
}

std::string intervalFrame(std::string_view addressDigits, std::string_view code)
{
    return commandFrame(addressDigits, std::string("0501").append(code));
}

} // namespace quorvel::autoread
