#include "app/parents_console.h"

namespace quorvel {

void useParentsConsole() {}

} // namespace quorvel
