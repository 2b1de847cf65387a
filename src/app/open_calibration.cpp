#include "app/openers.h"
#include "app/program.h"
#include "calibration/calibrationrecord.h"
#include "calibration/celebration1.h"
#include "calibration/form6.h"

namespace quorvel {

namespace {

constexpr struct {
    const char* action;
    const char* direction;
} kDirections[] = {{"XD", "X"}, {"YD", "Y"}, {"ZD", "Z"}};

/// A new one each time, so that it begins with the address and the type of the main window.
void showRecord(Program& program)
{
    auto* window = program.form1.findChild<calibration::CalibrationRecord*>();
    if (!window) window = new calibration::CalibrationRecord(program.workplace, &program.form1);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace

void addCalibrationTool(Program& program)
{
    if (program.bench.isUserEdition()) return;
    program.form1.addTool(QStringLiteral("&Calibration Record"), [&program] { showRecord(program); });
}

void openCalibration(Program& program)
{
    for (const auto& row : kDirections) {
        program.form1.setOpener(row.action, [&program, direction = row.direction] {
            program.bench.CalibrationDirection = direction;
            calibration::Celebration1(program.workplace, &program.form1).exec();
        });
    }
    program.form1.setOpener("SL",
                            [&program] { calibration::Form6(program.workplace, &program.form1).exec(); });
}

} // namespace quorvel
