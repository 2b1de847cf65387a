#include "ctl/commands.h"

int main(int argc, char* argv[]) { return quorvel::ctl::runControl(argc, argv, QUORVEL_EDITION); }
