#include "settings/resetsetting.h"

#include "link/bytes.h"
#include "settings/reset.h"

#include <QCoreApplication>

namespace quorvel {

using link::shown;
using namespace settings;

namespace {

QString tr(const char* text) { return QCoreApplication::translate("ResetSetting", text); }

void reset(link::Bench& bench, link::Module1& module1, Messages& messages, QWidget* parent,
           const std::function<void(const QString&)>& status)
{
    if (!module1.port().PortOpen()) {
        messages.say(parent, kResetPortClosed);
        return;
    }
    if (!messages.ask(parent, kResetQuestion) || !messages.ask(parent, kResetSure)) return;
    const auto run = runReset(module1, bench, [&](const std::string& step) {
        status(tr("Resetting readout %1: %2 ...").arg(bench.currentAddress, shown(step)));
    });
    status(run.ok ? tr("Readout %1 is reset.").arg(bench.currentAddress)
                  : tr("The reset of readout %1 failed at %2. %3 The steps before it stay in force.")
                        .arg(bench.currentAddress, shown(run.where), run.why));
    messages.say(parent, run.ok ? kResetOk : kResetFailed);
}

} // namespace

void ResetSetting_Click(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                        QWidget* parent, const std::function<void(const QString&)>& status)
{
    gate.run([&] { reset(bench, module1, messages, parent, status); });
}

} // namespace quorvel
