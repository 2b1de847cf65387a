#include "sim/transport.h"

#include <algorithm>

namespace quorvelsim {

void Transport::send(std::string_view characters)
{
    if (!hasClient()) return;
    pending_.append(characters.substr(0, kPending - std::min(kPending, pending_.size())));
    flush();
}

void Transport::flush()
{
    if (hasClient() && !pending_.empty()) pending_.erase(0, write(pending_));
}

} // namespace quorvelsim
