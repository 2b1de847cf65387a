#include "autoread/storedreadings.h"

#include "autoread/file_name.h"
#include "files/name.h"
#include "link/bytes.h"
#include "main/inputfilter.h"
#include "main/progress.h"
#include "text/duration.h"
#include "ui_storedreadings.h"

#include <QEvent>
#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>

namespace quorvel {

using autoread::Visit;
using link::shown;

namespace {

constexpr int kRetries = 3;
constexpr int kRingLines = 5;
constexpr auto kFilter = "Database or text (*.mdb *.csv)";

std::filesystem::path pathOf(const QString& name) { return QFileInfo(name).filesystemFilePath(); }

} // namespace

StoredReadings::StoredReadings(const Workplace& workplace, autoread::Book& book, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::StoredReadings>()), book_(book)
{
    ui_->setupUi(this);
    useStatusLine(*ui_->Status);
    useAddressBox(*ui_->Address);
    connectControls();
    InputFilter::letThrough(ui_->Stop);
    InputFilter::letFocusMove(this);
    // five lines of the ring, without a jump of the window
    ui_->Ring->setMinimumHeight(kRingLines * ui_->Ring->fontMetrics().lineSpacing());
    setRunning(false);
}

StoredReadings::~StoredReadings() = default;

void StoredReadings::connectControls()
{
    onStep(ui_->Query, &StoredReadings::Query_Click);
    onStep(ui_->NewFile, &StoredReadings::NewFile_Click);
    onStep(ui_->ContinueFile, &StoredReadings::ContinueFile_Click);
    onStep(ui_->Check, &StoredReadings::Check_Click);
    onStep(ui_->Delete, &StoredReadings::Delete_Click);
    connect(ui_->Stop, &QPushButton::clicked, this, [this] { stopped_ = true; });
    connect(ui_->SaveReport, &QPushButton::clicked, this, &StoredReadings::SaveReport_Click);
    connect(ui_->Address, &QLineEdit::textChanged, this, &StoredReadings::addressTyped);
    connect(&module1_.port(), &link::MSComm::lost, this, &StoredReadings::refreshControls);
    enterPresses(ui_->Address, ui_->Query);
}

QString StoredReadings::inWords(const std::string& sentence) { return QString::fromStdString(sentence); }

void StoredReadings::onStep(QPushButton* button, void (StoredReadings::*step)(Visit&))
{
    onClick(button, [this, step] { runStep(step); });
}

void StoredReadings::runStep(void (StoredReadings::*step)(Visit&))
{
    auto* focused = focusWidget();
    stopped_ = false;
    setRunning(true);
    const auto ended = qScopeGuard([this, focused] {
        setRunning(false);
        if (focused && focused->isEnabled()) focused->setFocus();
    });
    Visit visit(
        module1_, address(), bench_.instrumentType, book_,
        {.retries = kRetries, .verify = ui_->Verify->isChecked(), .stop = [this] { return isStopped(); }});
    (this->*step)(visit);
}

void StoredReadings::setRunning(bool running)
{
    running_ = running;
    refreshControls();
    if (running) {
        ui_->Stop->setFocus();
    } else {
        emptyBar(*ui_->Progress);
    }
}

void StoredReadings::refreshControls()
{
    const bool able = !running_ && address() > 0 && module1_.port().PortOpen();
    for (auto* button : {ui_->Query, ui_->NewFile, ui_->ContinueFile, ui_->Check})
        button->setEnabled(able);
    ui_->Delete->setEnabled(able && !module1_.readOnly());
    ui_->Address->setEnabled(!running_);
    ui_->Verify->setEnabled(!running_);
    ui_->Stop->setEnabled(running_);
    ui_->SaveReport->setEnabled(!running_ && !shown_.file.empty());
    refreshStatus();
}

/// The port and "Read Only" are switched in other windows.
bool StoredReadings::event(QEvent* event)
{
    const bool done = BusWindow::event(event);
    if (event->type() == QEvent::WindowActivate) refreshControls();
    return done;
}

autoread::Watcher StoredReadings::watcher()
{
    return {.stop = [this] { return isStopped(); },
            .progress =
                [this](const autoread::Progress& progress) {
                    const auto left = shown(text::timeLeft(progress.secondsLeft));
                    ui_->Progress->setMaximum(std::max(progress.total, 1));
                    ui_->Progress->setValue(progress.received);
                    ui_->Progress->setFormat(
                        tr("%1 of %2, %3").arg(progress.received).arg(progress.total).arg(left));
                },
            .remark = [this](const std::string& words) { tell(inWords(words)); }};
}

void StoredReadings::showBusy(const QString& words)
{
    ui_->Progress->setMaximum(0);
    ui_->Progress->setValue(0);
    tell(words);
}

std::optional<autoread::RingState> StoredReadings::lookAt(Visit& visit)
{
    clearRing();
    showBusy(tr("Asking readout %1 what it holds ...").arg(address()));
    auto ring = visit.askRing();
    if (!ring) {
        tell(inWords(ring.error()));
        return std::nullopt;
    }
    clearStatus();
    showRing(*ring);
    if (isStopped()) return std::nullopt;
    return std::move(*ring);
}

void StoredReadings::Query_Click(Visit& visit) { lookAt(visit); }

void StoredReadings::NewFile_Click(Visit& visit)
{
    const auto ring = lookAt(visit);
    if (!ring) return;
    if (ring->held() == 0)
        return tell(tr("Readout %1 holds no records; there is nothing to fetch.").arg(address()));
    const auto proposed = autoread::proposedName(address(), visit.type(), module1_.clock().now().date());
    const auto path = chooseFile(tr("New File"), true, inWords(proposed));
    if (path.isEmpty() || isStopped()) return;
    const auto existing = QFileInfo::exists(path) ? autoread::Existing::Replace : autoread::Existing::Keep;
    if (!mayWrite(messages_, this, path) || isStopped()) return;
    tell(tr("Fetching into %1 ...").arg(path));
    showReport(visit.download(pathOf(path), existing, watcher()));
}

void StoredReadings::ContinueFile_Click(Visit& visit)
{
    const auto known = book_.files(address());
    const auto path = chooseFile(tr("Continue File"), false,
                                 known.empty() ? QString() : inWords(files::inWords(known.front())));
    if (path.isEmpty() || isStopped()) return;
    showBusy(tr("Looking for the last row of %1 in the readout ...").arg(path));
    const auto plan = visit.plan(pathOf(path));
    if (!plan) return tell(inWords(plan.error()));
    showRing(plan->ring);
    const auto words = inWords(plan->words);
    tell(words);
    if (!plan->isPossible() || isStopped()) return;
    if (plan->needsConsent() && !messages_.ask(this, words + u' ' + tr("Continue this file all the same?")))
        return;
    if (isStopped()) return;
    showReport(visit.continueFile(*plan, watcher()));
    addStatus(words);
}

void StoredReadings::Check_Click(Visit& visit)
{
    if (book_.files(address()).empty() && addedFiles_.empty()) {
        const auto path = chooseFile(tr("Which file holds the records?"), false, QString());
        if (path.isEmpty()) return;
        addedFiles_.push_back(pathOf(path));
    }
    auto check = checkFiles(visit);
    while (!check.safe && check.inFiles < check.held && !isStopped() &&
           messages_.ask(this, inWords(check.words) + u' ' + tr("Look in one more file?"))) {
        const auto path = chooseFile(tr("Which file holds the others?"), false, QString());
        if (path.isEmpty() || isStopped()) return;
        addedFiles_.push_back(pathOf(path));
        check = checkFiles(visit);
    }
}

autoread::CheckResult StoredReadings::checkFiles(Visit& visit)
{
    auto all = book_.files(address());
    for (const auto& file : addedFiles_)
        if (std::find(all.begin(), all.end(), file) == all.end()) all.push_back(file);
    showBusy(tr("Comparing the readout with the files ..."));
    auto check = visit.check(all);
    if (check.held == 0)
        addedFiles_.clear(); // one that cannot be read would stand in the way of every later check
    showCheck(check);
    return check;
}

// What was agreed to is looked at again: the readout may have taken a reading while the question was open.
void StoredReadings::Delete_Click(Visit& visit)
{
    auto check = checkFiles(visit);
    for (bool sure = false; !sure;) {
        if (check.held == 0 || isStopped() || !agreesToDelete(check) || isStopped()) return;
        const auto now = checkFiles(visit);
        sure = now.safe || (now.held == check.held && now.inFiles == check.inFiles);
        check = now;
    }
    showBusy(tr("Deleting ..."));
    const auto deletion = visit.deleteRecords();
    clearRing();
    tell(inWords(deletion.words));
    shown_.text.prepend(inWords(deletion.words) + u'\n');
    showText(Shown(shown_));
}

bool StoredReadings::agreesToDelete(const autoread::CheckResult& check)
{
    const auto question =
        check.safe ? tr("Delete the %1 records in readout %2 now?")
                   : tr("Records that are in no file are lost for good. Delete all %1 records in readout "
                        "%2 all the same?");
    const auto text = inWords(check.words) + u'\n' + question.arg(check.held).arg(check.address);
    return check.safe ? messages_.ask(this, text) : messages_.askToLose(this, text);
}

QString StoredReadings::chooseFile(const QString& caption, bool toSave, const QString& proposed)
{
    return messages_.chooseFile(this, {caption, QLatin1String(kFilter), toSave, proposed});
}

} // namespace quorvel
