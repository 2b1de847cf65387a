#include "link/transaction.h"

#include "text/reply.h"

#include <string_view>

namespace quorvel::link {

namespace {

constexpr int kAddressPosition = 2;
constexpr int kAddressLength = 2;
constexpr std::string_view kEveryReadout = "FF";

std::string_view compared(const Transaction& transaction, std::string_view reply)
{
    return transaction.ignoresBlanks ? text::trimBlanks(reply) : reply;
}

} // namespace

bool answers(const Transaction& transaction, const std::string& reply)
{
    auto frame = transaction.frame;
    const auto come = compared(transaction, reply);
    const auto address = text::mid(come, kAddressPosition, kAddressLength);
    if (text::mid(frame, kAddressPosition, kAddressLength) == kEveryReadout &&
        address.size() == kAddressLength)
        frame.replace(kAddressPosition - 1, kAddressLength, address);
    return text::echoes(frame, come, transaction.head) && come.ends_with("\r\n");
}

bool confirms(const Transaction& transaction, const std::string& reply)
{
    return text::echoes(transaction.frame, compared(transaction, reply), transaction.echoLength);
}

} // namespace quorvel::link
