#include "ctl/commands.h"

#include <QCoreApplication>

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    return quorvel::ctl::runControl(argc, argv, "USER");
}
