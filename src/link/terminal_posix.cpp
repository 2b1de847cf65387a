#include "link/terminal.h"

#include <unistd.h>

namespace quorvel::link {

bool errorsReachATerminal() { return ::isatty(STDERR_FILENO) == 1; }

} // namespace quorvel::link
