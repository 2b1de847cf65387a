#include "app/openers.h"
#include "app/workplace.h"
#include "grayscale/grayscalechart.h"

namespace quorvel {

void openGrayscale(Workplace& workplace)
{
    for (const auto& direction : grayscale::kDirections) {
        const auto name = QString::fromStdString(std::string(direction.name));
        workplace.form1.setOpener(name + QStringLiteral("_GrayScale_Data"), [&workplace, name] {
            workplace.bench.GrayscaleDirection = name;
            GrayScaleChart(workplace.bench, workplace.module1, workplace.gate, workplace.messages,
                           &workplace.form1)
                .exec();
        });
    }
}

} // namespace quorvel
