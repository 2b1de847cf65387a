#include "app/openers.h"
#include "app/workplace.h"
#include "calibration/celebration1.h"
#include "calibration/form6.h"

namespace quorvel {

namespace {

constexpr struct {
    const char* action;
    const char* direction;
} kDirections[] = {{"XD", "X"}, {"YD", "Y"}, {"ZD", "Z"}};

} // namespace

void openCalibration(Workplace& workplace)
{
    for (const auto& row : kDirections) {
        workplace.form1.setOpener(row.action, [&workplace, direction = row.direction] {
            workplace.bench.CalibrationDirection = direction;
            calibration::Celebration1(workplace.bench, workplace.module1, workplace.gate, workplace.messages,
                                      &workplace.form1)
                .exec();
        });
    }
    workplace.form1.setOpener("SL", [&workplace] {
        calibration::Form6(workplace.bench, workplace.module1, workplace.gate, workplace.messages,
                           &workplace.form1)
            .exec();
    });
}

} // namespace quorvel
