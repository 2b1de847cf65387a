#include "ctl/mdb_command.h"

#include <iostream>

/// The mdb command on its own, for the tests.
int main(int argc, char** argv)
{
    CLI::App app("mdb");
    int exitStatus = 0;
    quorvel::ctl::addMdbCommand(app, [&exitStatus](const std::string& reason) {
        std::cerr << reason << '\n';
        exitStatus = 1;
    });
    CLI11_PARSE(app, argc, argv);
    return exitStatus;
}
