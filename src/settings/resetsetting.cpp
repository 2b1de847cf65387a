#include "settings/resetsetting.h"

#include "link/bytes.h"
#include "protocol/reset.h"

#include <QCoreApplication>

namespace quorvel {

using link::shown;
using namespace protocol;

namespace {

QString tr(const char* text) { return QCoreApplication::translate("ResetSetting", text); }

/// How far a reset that failed has come.
QString failedText(const QString& address, const ResetRun& run)
{
    const auto failed =
        tr("The reset of readout %1 failed at %2. %3").arg(address, shown(run.where), run.why);
    if (run.done == 0) return failed + tr(" Nothing had been changed before.");
    return failed + (run.done == 1 ? tr(" The step before it stays in force.")
                                   : tr(" The %1 steps before it stay in force.").arg(run.done));
}

void reset(const Workplace& workplace, QWidget* parent, const std::function<void(const QString&)>& status)
{
    auto& messages = workplace.messages;
    if (!workplace.module1.port().PortOpen()) return messages.say(parent, kResetPortClosed);
    if (!messages.ask(parent, kResetQuestion) || !messages.ask(parent, kResetSure)) return;
    const auto& address = workplace.bench.currentAddress;
    const auto run = runReset(workplace.module1, workplace.bench, [&](const std::string& step) {
        status(tr("Resetting readout %1: %2 ...").arg(address, shown(step)));
    });
    status(run.ok ? tr("Readout %1 is reset.").arg(address) : failedText(address, run));
    messages.say(parent, run.ok ? kResetOk : kResetFailed);
    workplace.module1.dropRest();
}

} // namespace

void ResetSetting_Click(const Workplace& workplace, QWidget* parent,
                        const std::function<void(const QString&)>& status)
{
    workplace.gate.run([&] { reset(workplace, parent, status); });
}

} // namespace quorvel
