#include "app/edition.h"

#include "app/options.h"

namespace quorvel {

const char* const kEdition = QUORVEL_EDITION;

} // namespace quorvel

int main(int argc, char* argv[]) { return quorvel::runProgram(argc, argv); }
