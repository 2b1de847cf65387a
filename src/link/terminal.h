#pragma once

namespace quorvel::link {

/// True when a person sees what is written to stderr as it comes: it is a terminal, not a file or a pipe. One source file
/// per platform.
bool errorsReachATerminal();

} // namespace quorvel::link
