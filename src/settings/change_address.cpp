#include "settings/change_address.h"

#include "link/address.h"
#include "settings/exchange.h"
#include "text/reply.h"

namespace quorvel::settings {

namespace {

constexpr int kAddressEcho = 7;

} // namespace

const char* addressChangeError(int oldAddress, int newAddress)
{
    if (!link::isAddress(oldAddress)) return kOldAddressError;
    if (!link::isAddress(newAddress)) return kNewAddressError;
    return oldAddress == newAddress ? kSameAddress : nullptr;
}

std::string addressChangeFrame(int oldAddress, int newAddress)
{
    return frameOf(link::AddressToHex(oldAddress), "02" + link::AddressToHex(newAddress) + "FF");
}

bool addressChanged(std::string_view frame, std::string_view received)
{
    return text::echoes(frame, received, kAddressEcho);
}

} // namespace quorvel::settings
