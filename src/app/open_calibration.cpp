#include "app/openers.h"
#include "app/program.h"
#include "calibration/celebration1.h"
#include "calibration/form6.h"

namespace quorvel {

namespace {

constexpr struct {
    const char* action;
    const char* direction;
} kDirections[] = {{"XD", "X"}, {"YD", "Y"}, {"ZD", "Z"}};

} // namespace

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
