#include "protocol/change_address.h"

#include "link/address.h"
#include "protocol/command.h"

namespace quorvel::protocol {

const char* addressChangeError(int oldAddress, int newAddress)
{
    if (!link::isAddress(oldAddress)) return kOldAddressError;
    if (!link::isAddress(newAddress)) return kNewAddressError;
    return oldAddress == newAddress ? kSameAddress : nullptr;
}

link::Transaction addressChange(int oldAddress, int newAddress)
{
    return transaction(CommandId::ChangeAddress, link::AddressToHex(oldAddress),
                       link::AddressToHex(newAddress));
}

} // namespace quorvel::protocol
