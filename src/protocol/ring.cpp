#include "protocol/ring.h"

#include "protocol/command.h"
#include "text/number.h"

#include <limits>

namespace quorvel::protocol {

namespace {

constexpr int kLastCount = std::numeric_limits<std::int16_t>::max();
constexpr auto kPointersCommand = CommandId::QueryPointers;

int endOf(const RingPointers& pointers)
{
    return pointers.next < pointers.first ? pointers.first + pointers.capacity : pointers.next;
}

} // namespace

link::Transaction pointersQuery(std::string_view addressDigits)
{
    return transaction(kPointersCommand, addressDigits);
}

link::Transaction recordsDelete(std::string_view addressDigits)
{
    return transaction(CommandId::DeleteRecords, addressDigits);
}

RingPointers readPointers(std::string_view reply)
{
    const auto number = [reply](std::size_t index) {
        return text::integerOf(field(kPointersCommand, index, reply));
    };
    return {number(0), number(1), number(2)};
}

bool isPlainPointersReply(std::string_view reply) { return holdsDigitsOnly(kPointersCommand, reply); }

RecordSpan spanOf(const RingPointers& pointers)
{
    return {pointers.capacity, pointers.first, endOf(pointers)};
}

RecordSpan risingSpan(const RingPointers& pointers)
{
    const bool wrapped = pointers.next < pointers.first;
    return {pointers.capacity, pointers.first, pointers.next + (wrapped ? pointers.capacity : 0)};
}

bool isDeletionConfirmed(const link::Exchange& deletion)
{
    return deletion.complete() && deletion.reply == deletion.transaction.frame;
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

} // namespace quorvel::protocol
