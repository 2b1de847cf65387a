#include "app/edition.h"

#include "app/ctl/commands.h"

namespace quorvel {

const char* const kEdition = QUORVEL_EDITION;

} // namespace quorvel

int main(int argc, char* argv[]) { return quorvel::ctl::runControl(argc, argv); }
