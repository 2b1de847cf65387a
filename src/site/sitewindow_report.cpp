// The site report of the window "Site": who was there, what the readouts told, what was changed.

#include "chart/export.h"
#include "site/asking.h"
#include "site/sitewindow.h"
#include "site/visit.h"
#include "site/visitdialog.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>

namespace quorvel::site {

namespace {

/// A name without what file systems do not take.
QString fileNameOf(QString name)
{
    for (auto& character : name) {
        if (QStringLiteral("/\\:*?\"<>|").contains(character) || !character.isPrint()) character = u'-';
    }
    return name;
}

} // namespace

void SiteWindow::Report_Click()
{
    if (model_.rowCount() == 0) return tell(standing());
    const auto now = module1_.clock().now();
    VisitDialog dialog(surroundings_.person, now.date().startOfDay(), module1_.port().PortOpen(), this);
    if (dialog.exec() != QDialog::Accepted) return;
    const auto name = model_.site().name.isEmpty() ? tr("site") : model_.site().name;
    const auto proposed = fileNameOf(name) + now.toString(QStringLiteral(" yyyy-MM-dd.'pdf'"));
    const auto path =
        messages_.chooseFile(this, {tr("Save Site Report"), QLatin1String(page::kFilter), true, proposed});
    if (path.isEmpty() || !mayWrite(messages_, this, path)) return;
    const VisitNotes notes{path, dialog.person(), dialog.remark(), dialog.since(), dialog.asks()};
    if (!notes.asks) return saveReport(notes);
    talk([this, notes] {
        setRunning(true);
        const auto ended = qScopeGuard([this] { setRunning(false); });
        askForReport();
        if (!isStopped()) return saveReport(notes);
        tell(tr("Stopped; no report was saved."));
    });
}

/// Readings, clocks and settings, readout by readout.
void SiteWindow::askForReport()
{
    settings_.clear();
    const auto readouts = model_.site().readouts;
    int done = 0;
    for (const auto& readout : readouts) {
        if (isStopped()) return;
        tell(tr("Asking readout %1 for the report ...").arg(readout.address));
        const auto reading = takeReading(module1_, readout);
        model_.take(reading);
        trend_.take(reading);
        const auto clock = askClock(module1_, readout.address);
        model_.takeClock(readout.address, clock.words, clock.seconds);
        settings_[readout.address] = askSettings(module1_, readout, [this] { return isStopped(); });
        showProgress(++done, static_cast<int>(readouts.size()));
    }
    trendPanel_.refresh();
}

Visit SiteWindow::visitOf(const VisitNotes& notes) const
{
    Visit visit{.site = model_.site(),
                .at = module1_.clock().now(),
                .port = module1_.port().deviceName(),
                .person = notes.person,
                .remark = notes.remark,
                .program = chart::programName(),
                .readouts = {},
                .since = notes.since,
                .changes = {},
                .changesUnread = 0,
                .changesUnknown = {}};
    for (int row = 0; row < model_.rowCount(); ++row) {
        const auto& readout = model_.readout(row);
        const auto settings = settings_.find(readout.address);
        const bool asked = notes.asks && settings != settings_.end();
        visit.readouts.push_back({readout, model_.held(row), model_.limitWords(row), model_.passesLimit(row),
                                  model_.lineWords(row),
                                  asked ? settings->second : std::vector<SettingTold>()});
    }
    const auto changes = surroundings_.changes(notes.since);
    if (changes) {
        std::copy_if(
            changes->made.begin(), changes->made.end(), std::back_inserter(visit.changes),
            [&visit](const ChangeMade& change) { return visit.site.readoutAt(change.address) != nullptr; });
        visit.changesUnread = changes->unread;
    } else {
        visit.changesUnknown = QString::fromStdString(changes.error());
    }
    return visit;
}

void SiteWindow::saveReport(const VisitNotes& notes)
{
    const auto saved = page::save(pageOf(visitOf(notes)), QFileInfo(notes.path).filesystemFilePath());
    tell(saved ? tr("The report is saved as %1.").arg(notes.path) : QString::fromStdString(saved.error()));
}

} // namespace quorvel::site
