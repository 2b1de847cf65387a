#include "ctl/calibration_record_command.h"
#include "ctl/commands.h"

#include <QApplication>

#include <algorithm>
#include <memory>
#include <string_view>

namespace {

/// The pages of the calibration record are drawn as the window draws them, although nothing is shown; all else needs no
/// interface at all.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char* argv[])
{
    const bool draws = std::any_of(argv, argv + argc, [](const char* argument) {
        return std::string_view(argument) == quorvel::ctl::kRecordCommand;
    });
    if (!draws) return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QApplication>(argc, argv);
}

} // namespace

int main(int argc, char* argv[])
{
    const auto application = makeApplication(argc, argv);
    return quorvel::ctl::runControl(argc, argv, "FACTORY", quorvel::ctl::addCalibrationCommands);
}
