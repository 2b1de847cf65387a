#include "app/openers.h"
#include "app/program.h"
#include "grayscale/grayscalechart.h"

namespace quorvel {

void openGrayscale(Program& program)
{
    for (const auto& row : protocol::kGrayscales) {
        const auto name = QString::fromStdString(std::string(protocol::nameOf(row.sensor)));
        program.form1.setOpener(name + QStringLiteral("_GrayScale_Data"), [&program, name] {
            program.bench.GrayscaleDirection = name;
            GrayScaleChart(program.workplace, &program.form1).exec();
        });
    }
}

} // namespace quorvel
