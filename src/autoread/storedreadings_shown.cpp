// What the window "Stored Readings" shows: the ring, reports, the status line, and the report on the disk.

#include "autoread/storedreadings.h"

#include "files/name.h"
#include "files/replace.h"
#include "link/address.h"
#include "link/bytes.h"
#include "main/addresshint.h"
#include "ui_storedreadings.h"

#include <QJsonDocument>

namespace quorvel {

void StoredReadings::showRing(const autoread::RingState& ring)
{
    ui_->Ring->setText(inWords(autoread::text(ring, address())).trimmed());
}

void StoredReadings::clearRing() { ui_->Ring->clear(); }

void StoredReadings::showReport(const autoread::Report& report)
{
    if (report.ending == autoread::Ending::NotBegun) return tell(inWords(report.reason));
    tell(inWords(autoread::summary(report)));
    addStatus(inWords(report.reason));
    addStatus(nextStep());
    showText({inWords(autoread::text(report)), autoread::json(report), report.file, module1_.clock().now()});
}

void StoredReadings::showCheck(const autoread::CheckResult& check)
{
    tell(inWords(check.words));
    addStatus(nextStep());
    Shown next{inWords(check.words) + u'\n', {}, {}, check.at};
    if (const auto* report = book_.report(check.address)) {
        next.text += inWords(autoread::text(*report));
        next.json = autoread::json(*report);
        next.file = report->file;
    }
    next.json[QStringLiteral("check")] = autoread::json(check);
    if (next.file.empty() && !check.files.empty()) next.file = check.files.front();
    showText(next);
}

void StoredReadings::showText(const Shown& next)
{
    shown_ = next;
    ui_->Report->setPlainText(next.text);
}

// Named by the moment as well, so that the reports of several visits to one file stand side by side.
void StoredReadings::SaveReport_Click()
{
    const auto mark = shown_.at.toString(QStringLiteral(".'report'-yyyy-MM-dd-HHmmss")).toStdString();
    const QByteArray contents[] = {shown_.text.toUtf8(), QJsonDocument(shown_.json).toJson()};
    const char* const endings[] = {".txt", ".json"};
    QStringList saved;
    for (std::size_t i = 0; i < std::size(contents); ++i) {
        auto path = shown_.file;
        path.replace_extension(mark + endings[i]);
        const auto written = files::replaceContent(path, contents[i].toStdString());
        if (!written) return tell(inWords(written.error()));
        saved << inWords(files::inWords(path));
    }
    tell(tr("Saved as %1.").arg(saved.join(tr(" and "))));
}

void StoredReadings::addressTyped()
{
    addedFiles_.clear();
    clearRing();
    clearStatus();
    refreshControls();
}

int StoredReadings::address() const { return link::addressIn(link::bytes(ui_->Address->text())); }

QString StoredReadings::warning() const { return oneReadoutHint(ui_->Address->text()); }

QString StoredReadings::standing() const
{
    if (!module1_.port().PortOpen()) return tr("The port is closed. Press \"OpenComm\" in the main window.");
    if (address() == 0) return {};
    return inWords(book_.text(address())) + u' ' + nextStep();
}

QString StoredReadings::nextStep() const
{
    const int missing = book_.missing(address());
    const auto* check = book_.lastCheck(address());
    if (missing < 0) return tr("\"Query\" shows what it holds.");
    const bool inFiles = !book_.files(address()).empty();
    if (missing > 0 && inFiles) return tr("Next: \"Continue File ...\".");
    if (missing > 0)
        return tr("Next: \"New File ...\", or \"Continue File ...\" to go on with an earlier one.");
    if (!inFiles) return {};
    if (!check || !check->safe) return tr("Next: \"Check\".");
    if (module1_.readOnly()) return tr("\"Read Only\" is on; switch it off under \"Tools\" to delete.");
    return tr("Next: \"Delete ...\", if the readout is to begin anew.");
}

} // namespace quorvel
