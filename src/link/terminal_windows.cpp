#include "link/terminal.h"

#include <cstdio>

#include <io.h>

namespace quorvel::link {

bool errorsReachATerminal() { return ::_isatty(::_fileno(stderr)) != 0; }

} // namespace quorvel::link
