#include "app/openers.h"
#include "app/workplace.h"
#include "autoread/setauto.h"

namespace quorvel {

void openAutoread(Workplace& workplace)
{
    workplace.form1.setOpener("AutomaticReading", [&workplace] {
        SetAuto(workplace.bench, workplace.module1, workplace.gate, workplace.messages, &workplace.form1)
            .exec();
    });
}

} // namespace quorvel
