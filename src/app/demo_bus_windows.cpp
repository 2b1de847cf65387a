#include "app/demo_bus.h"

namespace quorvel {

QStringList busPlace() { return {QStringLiteral("--tcp"), QStringLiteral("127.0.0.1:0")}; }

} // namespace quorvel
