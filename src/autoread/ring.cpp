#include "autoread/ring.h"

#include "autoread/frame.h"
#include "text/number.h"
#include "text/reply.h"

#include <limits>

namespace quorvel::autoread {

namespace {

constexpr int kLastCount = std::numeric_limits<std::int16_t>::max();
constexpr std::string_view kPointersCommand = "22";
constexpr int kFirstField = 6;
constexpr int kFieldWidth = 4;
constexpr int kFields = 3;

int endOf(const RingPointers& pointers)
{
    return pointers.next < pointers.first ? pointers.first + pointers.capacity : pointers.next;
}

} // namespace

std::string pointersFrame(std::string_view addressDigits)
{
    return commandFrame(addressDigits, kPointersCommand);
}

std::string recordFrame(std::string_view addressDigits, int index)
{
    return commandFrame(addressDigits, "24" + text::format(index, "0000"));
}

std::string deleteFrame(std::string_view addressDigits) { return commandFrame(addressDigits, "25"); }

RingPointers readPointers(std::string_view reply)
{
    const auto field = [reply](int number) {
        return text::integerOf(text::mid(reply, kFirstField + number * kFieldWidth, kFieldWidth));
    };
    return {field(0), field(1), field(2)};
}

bool isPlainPointersReply(std::string_view reply)
{
    return reply.size() == kPointersReplyLength && reply.front() == ':' &&
           text::mid(reply, 4, 2) == kPointersCommand &&
           text::allDigits(text::mid(reply, kFirstField, kFields * kFieldWidth));
}

RecordSpan spanOf(const RingPointers& pointers)
{
    return {pointers.capacity, pointers.first, endOf(pointers)};
}

std::string whyNotFetchable(const RingPointers& pointers)
{
    std::string why;
    if (pointers.capacity < 1) {
        why = "a ring without slots";
    } else if (pointers.first < 0 || pointers.next < 0) {
        why = "a negative position";
    } else if (endOf(pointers) > kLastCount) {
        why = "records beyond number " + text::general(kLastCount);
    } else {
        return {};
    }
    return "The readout reports " + why + " (capacity " + text::general(pointers.capacity) + ", first " +
           text::general(pointers.first) + ", next " + text::general(pointers.next) +
           "), so nothing can be fetched and no file was made. Try again; if it stays so, check the readout.";
}

} // namespace quorvel::autoread
