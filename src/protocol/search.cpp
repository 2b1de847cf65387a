#include "protocol/search.h"

#include "link/address.h"
#include "protocol/command.h"
#include "text/reply.h"

namespace quorvel::protocol {

namespace {

// One below and one above the addresses that a readout can have.
constexpr int kFirstCandidate = 0;
constexpr int kLastCandidate = 250;

/// What follows from the second ":" on; all of it when there is none.
std::string fromNextAnswer(const std::string& received)
{
    const auto next = received.find(':', 1);
    return next == std::string::npos ? received : received.substr(next);
}

} // namespace

link::Transaction search() { return transaction(CommandId::Search, "FF"); }

// Each candidate that occurs takes the address at the head of the text, not its own: the answers arrive in
// ascending order, so the heads are the candidates unless the bus garbled one.
std::vector<std::string> foundAddresses(std::string received)
{
    std::vector<std::string> addresses;
    for (int candidate = kFirstCandidate; candidate <= kLastCandidate; ++candidate) {
        if (received.find(":" + link::AddressToHex(candidate)) == std::string::npos) continue;
        addresses.push_back(link::HexToAddress(text::mid(received, 2, 2)));
        received = fromNextAnswer(received);
    }
    return addresses;
}

std::string foundText(const std::vector<std::string>& addresses)
{
    if (addresses.empty()) return kNothingFound;
    std::string text;
    for (const auto& address : addresses) {
        text += (text.empty() ? "" : ",") + address;
    }
    return text;
}

} // namespace quorvel::protocol
