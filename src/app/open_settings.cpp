#include "app/openers.h"
#include "app/program.h"
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
void show(Program& program)
{
    Window(program.workplace, &program.form1).exec();
}

void reset(Program& program)
{
    program.form1.runCommand([&program] {
        ResetSetting_Click(program.workplace, &program.form1,
                           [&program](const QString& text) { program.form1.showStatus(text); });
    });
}

struct Row {
    const char* action;
    void (*open)(Program& program);
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

void openSettings(Program& program)
{
    for (const auto& row : kRows)
        program.form1.setOpener(row.action, [&program, open = row.open] { open(program); });
}

} // namespace quorvel
