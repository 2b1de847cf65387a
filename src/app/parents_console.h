#pragma once

namespace quorvel {

/// On Windows a program with windows has no console. When it was started from one and its output is not led elsewhere,
/// what it says ("--help", a wrong option) appears there from now on. Elsewhere nothing is to be done.
void useParentsConsole();

} // namespace quorvel
