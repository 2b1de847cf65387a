#include "app/openers.h"
#include "app/workplace.h"
#include "settings/form2.h"
#include "settings/form4.h"
#include "settings/form51.h"
#include "settings/form52.h"
#include "settings/resetsetting.h"
#include "settings/settime.h"
#include "settings/setwire.h"

namespace quorvel {

namespace {

template<class Window>
void show(Workplace& workplace)
{
    Window(workplace.bench, workplace.module1, workplace.gate, workplace.messages, &workplace.form1).exec();
}

void reset(Workplace& workplace)
{
    ResetSetting_Click(workplace.bench, workplace.module1, workplace.gate, workplace.messages,
                       &workplace.form1,
                       [&workplace](const QString& text) { workplace.form1.showStatus(text); });
}

struct Row {
    const char* action;
    void (*open)(Workplace& workplace);
};
constexpr Row kRows[] = {
    {"ChangeAddress", show<Form2>},
    {"WireSetting", show<SetWire>},
    {"offset", show<Form51>},
    {"OS", show<Form52>},
    {"fz", show<Form4>},
    {"ClockSetting", show<SetTime>},
    {"ResetSetting", reset},
};

} // namespace

void openSettings(Workplace& workplace)
{
    for (const auto& row : kRows)
        workplace.form1.setOpener(row.action, [&workplace, open = row.open] { open(workplace); });
}

} // namespace quorvel
