#include "link/bench.h"

#include "link/address.h"
#include "link/bytes.h"

namespace quorvel::link {

std::string Bench::addressDigits() const { return AddressToHex(bytes(currentAddress)); }

} // namespace quorvel::link
