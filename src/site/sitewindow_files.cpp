// The file of the window "Site": new, from the search, opened, saved.

#include "files/name.h"
#include "link/address.h"
#include "link/bytes.h"
#include "site/asking.h"
#include "site/sitewindow.h"

#include <QFileInfo>
#include <QScopeGuard>

namespace quorvel::site {

namespace {

constexpr auto kFileFilter = "Site (*.quorvel-site.json)";
constexpr auto kLoseAndGoOn = "The site has changes that are not saved. Go on and lose them?";

} // namespace

bool SiteWindow::mayLoseChanges(const QString& question)
{
    return !changed_ || messages_.askToLose(this, question);
}

void SiteWindow::setChanged(bool changed)
{
    if (showing_) return;
    changed_ = changed;
    const auto file = path_.isEmpty() ? QString() : QFileInfo(path_).fileName();
    setWindowTitle((file.isEmpty() ? tr("Site") : tr("Site: %1").arg(file)) + QStringLiteral("[*]"));
    setWindowModified(changed);
    showColumns();
    refreshControls();
}

void SiteWindow::putSite(Site site, const QString& path)
{
    endSchedule();
    path_ = path;
    showing_ = true;
    siteName_.setText(site.name);
    port_.setText(site.port);
    note_.setText(site.note);
    trend_.forget();
    model_.setSite(std::move(site));
    showing_ = false;
    setChanged(false);
    fitNames();
    // not selectRow(), which looks at the keys that are held down
    const auto first = sorted_.index(0, 0);
    table_.selectionModel()->setCurrentIndex(first,
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    chooseCurves();
}

void SiteWindow::New_Click()
{
    if (!mayLoseChanges(tr(kLoseAndGoOn))) return;
    putSite(Site(), QString());
    clearStatus();
}

void SiteWindow::NewFromSearch_Click()
{
    const auto found = surroundings_.found ? surroundings_.found() : std::vector<int>();
    if (found.empty()) {
        return tell(
            tr("The last search found nothing. Press \"Search CCD\" in the main window, then this again."));
    }
    if (!module1_.port().PortOpen()) return say(kPortNotOpened);
    if (!mayLoseChanges(tr(kLoseAndGoOn))) return;
    setRunning(true);
    const auto ended = qScopeGuard([this] { setRunning(false); });
    Site site;
    site.port = module1_.port().deviceName();
    const auto otherwise = bench_.instrumentType == link::TypeC ? link::TypeA : bench_.instrumentType;
    for (const int address : found) {
        if (isStopped()) break;
        tell(tr("Asking readout %1 whether it has Z ...").arg(address));
        Readout readout;
        readout.address = address;
        readout.type = askType(module1_, address, otherwise);
        site.readouts.push_back(readout);
        showProgress(static_cast<int>(site.readouts.size()), static_cast<int>(found.size()));
    }
    const auto count = site.readouts.size();
    putSite(std::move(site), QString());
    setChanged(true);
    tell(tr("Readouts: %1 of %2 found. Without Z a readout is taken for type %3; correct it in the table "
            "where it is "
            "another.")
             .arg(count)
             .arg(found.size())
             .arg(link::shown(protocol::nameOf(otherwise))));
}

void SiteWindow::Open_Click()
{
    if (!mayLoseChanges(tr(kLoseAndGoOn))) return;
    const auto path = messages_.chooseFile(this, {tr("Open Site"), QLatin1String(kFileFilter)});
    if (!path.isEmpty()) open(path);
}

void SiteWindow::open(const QString& path)
{
    auto site = loadSite(QFileInfo(path).filesystemFilePath());
    if (!site) {
        const auto reason = QString::fromStdString(site.error());
        tell(reason);
        return say(reason);
    }
    const auto named = site->port;
    putSite(std::move(*site), path);
    tell(tr("Readouts: %1.").arg(model_.rowCount()));
    const auto device = module1_.port().deviceName();
    if (!named.isEmpty() && !device.isEmpty() && named != device)
        addStatus(tr("The site names the port %1; open is %2.").arg(named, device));
}

bool SiteWindow::Save_Click() { return path_.isEmpty() ? SaveAs_Click() : saveTo(path_); }

bool SiteWindow::SaveAs_Click()
{
    const auto name = model_.site().name.isEmpty() ? tr("site") : model_.site().name;
    auto proposed = path_.isEmpty() ? QString(name).replace(u'/', u'-') + QLatin1String(kSiteEnding) : path_;
    auto path = messages_.chooseFile(this, {tr("Save Site"), QLatin1String(kFileFilter), true, proposed});
    if (path.isEmpty()) return false;
    if (!path.endsWith(QLatin1String(kSiteEnding))) path += QLatin1String(kSiteEnding);
    if (path != path_ && !mayWrite(messages_, this, path)) return false;
    return saveTo(path);
}

bool SiteWindow::saveTo(const QString& path)
{
    const auto saved = saveSite(QFileInfo(path).filesystemFilePath(), model_.site());
    if (!saved) {
        tell(QString::fromStdString(saved.error()));
        return false;
    }
    path_ = path;
    setChanged(false);
    tell(tr("Saved as %1.").arg(path));
    return true;
}

void SiteWindow::Remove_Click()
{
    const auto chosen = table_.currentIndex();
    if (!chosen.isValid()) return tell(tr("Choose a readout in the table first."));
    const int row = sorted_.mapToSource(chosen).row();
    const auto& readout = model_.readout(row);
    const auto question = tr("Remove readout %1 %2 from the site?").arg(readout.address).arg(readout.name);
    if (!messages_.ask(this, question)) return;
    model_.removeReadout(row);
}

} // namespace quorvel::site
