#include "sim/transport.h"

namespace quorvelsim {

OpenedTransport openPty() { return {nullptr, "Windows has no pseudo-terminals; use --tcp 127.0.0.1:0"}; }

} // namespace quorvelsim
