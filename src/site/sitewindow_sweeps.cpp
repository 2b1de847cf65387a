// What the window "Site" asks the bus: sweeps, once or by the clock, and the clocks of the readouts.

#include "files/name.h"
#include "link/bytes.h"
#include "main/progress.h"
#include "site/asking.h"
#include "site/readinglines.h"
#include "site/sitewindow.h"
#include "text/duration.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>

namespace quorvel::site {

namespace {

constexpr auto kLogFilter = "Readings (*.csv)";
constexpr qint64 kLongestTick = 200; // ms
constexpr double kMsOfSecond = 1000;

/// The next step when nobody answered.
QString whyNobody() { return SiteWindow::tr("Tools > \"Why no answer?\" tests the line."); }

QString hourOf(const QDateTime& moment) { return moment.toString(QStringLiteral("HH:mm:ss")); }

} // namespace

bool SiteWindow::isHeldUp()
{
    if (!gate_.busy() || running_) return false;
    tell(tr("Another command runs; press this again when it has ended."));
    return true;
}

void SiteWindow::talk(const std::function<void()>& handler)
{
    if (waits_ || isHeldUp()) return;
    waits_ = true;
    gate_.runWhenFree(this, [this, handler] {
        waits_ = false;
        beginHandler();
        handler();
        module1_.dropRest();
    });
}

void SiteWindow::besides(const std::function<void()>& action)
{
    if (waits_ || isHeldUp()) return;
    if (!gate_.busy()) return action();
    waits_ = true;
    gate_.runWhenFree(this, [this, action] {
        QMetaObject::invokeMethod(
            this,
            [this, action] {
                waits_ = false;
                action();
            },
            Qt::QueuedConnection);
    });
}

void SiteWindow::setRunning(bool running)
{
    running_ = running;
    stopAsked_ = false;
    refreshControls();
    if (!running) emptyBar(progress_);
}

void SiteWindow::refreshControls()
{
    const bool active = running_ || schedule_;
    const bool focused = sweep_.hasFocus() || stop_.hasFocus();
    sweep_.setEnabled(!active);
    stop_.setEnabled(active);
    if (focused) (active ? stop_ : sweep_).setFocus();
    every_.setEnabled(!active);
    seconds_.setEnabled(!active && every_.isChecked());
    const bool some = model_.rowCount() > 0;
    for (auto* button : {&remove_, &zero_, &clocks_, &report_})
        button->setEnabled(some);
    daily_.setEnabled(!log_);
    refreshStatus();
}

void SiteWindow::showProgress(int done, int total)
{
    progress_.setMaximum(std::max(total, 1));
    progress_.setValue(done);
    progress_.setFormat(tr("%1 of %2").arg(done).arg(total));
}

void SiteWindow::Sweep_Click()
{
    if (model_.rowCount() == 0) return tell(standing());
    if (isHeldUp()) return;
    if (!module1_.port().PortOpen()) return say(kPortNotOpened);
    if (every_.isChecked()) return startSchedule();
    runHandler([this] { sweep(); });
}

void SiteWindow::Stop_Click()
{
    stopAsked_ = true;
    const bool repeated = schedule_.has_value();
    endSchedule();
    if (!running_ && repeated) tell(tr("Stopped."));
}

void SiteWindow::startSchedule()
{
    schedule_.emplace(seconds_.value());
    skipped_ = 0;
    due_ = schedule_->nextAfter(module1_.clock().now());
    refreshControls();
    tell(nextWords());
    waitForDue();
}

void SiteWindow::endSchedule()
{
    schedule_.reset();
    refreshControls();
}

QString SiteWindow::nextWords() const
{
    if (!schedule_) return {};
    auto words = tr("Next sweep at %1.").arg(hourOf(due_));
    if (skipped_ > 0) words += u' ' + tr("Sweeps skipped so far: %1.").arg(skipped_);
    return words;
}

/// Comes back in time for the sweep that is due.
void SiteWindow::waitForDue()
{
    qint64 left = kLongestTick;
    if (schedule_) {
        const auto now = module1_.clock().now();
        // the clock may have been set back meanwhile
        if (now.msecsTo(due_) > qint64{1000} * seconds_.value()) due_ = schedule_->nextAfter(now);
        left = std::clamp(now.msecsTo(due_), qint64{1}, kLongestTick);
    }
    tick_.start(static_cast<int>(left));
}

void SiteWindow::sweepWhenDue()
{
    const auto due = due_;
    due_ = schedule_->nextAfter(module1_.clock().now());
    if (gate_.busy()) {
        skipped_ += 1 + schedule_->skippedBetween(due, due_);
        tell(tr("The sweep of %1 was skipped: another command runs.").arg(hourOf(due)));
        return addStatus(nextWords());
    }
    runHandler([this] { sweep(); });
    if (!schedule_) return;
    due_ = schedule_->nextAfter(module1_.clock().now());
    skipped_ += schedule_->skippedBetween(due, due_);
    addStatus(nextWords());
}

void SiteWindow::sweep()
{
    setRunning(true);
    const auto ended = qScopeGuard([this] { setRunning(false); });
    const auto readouts = model_.site().readouts; // may be edited meanwhile
    const auto total = static_cast<int>(readouts.size());
    const auto day = module1_.clock().now().date();
    int done = 0;
    showProgress(done, total);
    const auto sweep = takeSweep(module1_, readouts,
                                 {[this] { return isStopped(); },
                                  [&](const Reading& reading) {
                                      model_.take(reading);
                                      trend_.take(reading);
                                      log(reading, day);
                                      showProgress(++done, total);
                                  }});
    trendPanel_.refresh();
    endLogOfSweep();
    tell(sweepWords(sweep));
    addStatus(logFailure_);
}

QString SiteWindow::sweepWords(const Sweep& sweep) const
{
    const auto answered = std::count_if(sweep.readings.begin(), sweep.readings.end(),
                                        [](const Reading& reading) { return reading.complete(); });
    const auto seconds = static_cast<double>(sweep.begun.msecsTo(sweep.ended)) / kMsOfSecond;
    auto words = tr("Sweep of %1: %2 of %3 readouts answered, %4 s.")
                     .arg(hourOf(sweep.begun))
                     .arg(answered)
                     .arg(sweep.readings.size())
                     .arg(seconds, 0, 'f', 1);
    if (sweep.stopped) words += u' ' + tr("Stopped before the end.");
    const int passing = static_cast<int>(
        std::count_if(sweep.readings.begin(), sweep.readings.end(), [this](const Reading& reading) {
            const int row = model_.rowOf(reading.address);
            return row >= 0 && reading.complete() && model_.passesLimit(row);
        }));
    if (answered == 0 && !sweep.readings.empty()) words += u' ' + whyNobody();
    if (passing > 0) words += u' ' + tr("Beyond their limits: %1.").arg(passing);
    return words;
}

void SiteWindow::Clocks_Click()
{
    if (!module1_.port().PortOpen()) return say(kPortNotOpened);
    setRunning(true);
    const auto ended = qScopeGuard([this] { setRunning(false); });
    const auto readouts = model_.site().readouts;
    int told = 0;
    int done = 0;
    for (const auto& readout : readouts) {
        if (isStopped()) break;
        const auto clock = askClock(module1_, readout.address);
        model_.takeClock(readout.address, clock.words, clock.seconds);
        if (clock.seconds) ++told;
        showProgress(++done, static_cast<int>(readouts.size()));
    }
    tell(tr("Clocks: %1 of %2 told.").arg(told).arg(done));
    if (told == 0 && done > 0) addStatus(whyNobody());
}

void SiteWindow::Log_Toggled(bool on)
{
    clearStatus();
    endLog();
    if (on) {
        const auto path = messages_.chooseFile(
            this, {tr("Log Readings"), QLatin1String(kLogFilter), true, tr("readings.csv")});
        if (!path.isEmpty()) beginLog(QFileInfo(path).filesystemFilePath());
    }
    toFile_.setChecked(log_ != nullptr);
    refreshControls();
}

void SiteWindow::beginLog(const std::filesystem::path& path)
{
    log_ = std::make_unique<ReadingLog>(path, ReadingLog::Form{csvHeader(), daily_.isChecked()});
    const auto today = module1_.clock().now().date();
    const auto file = log_->fileOf(today);
    QFile there(file);
    const bool fits =
        !there.open(QIODevice::ReadOnly) || there.size() == 0 || there.readLine() == csvHeader();
    // the header is written now, so that a file that cannot be written is known before the first sweep
    const auto begun = fits ? log_->append(today, {})
                            : files::Status(files::Failure{
                                  files::inWords(file) + " is not a log of readings. Choose another name."});
    if (begun) return sayLogged(today);
    log_.reset();
    tell(QString::fromStdString(begun.error()));
}

void SiteWindow::log(const Reading& reading, const QDate& day)
{
    const auto* readout = model_.site().readoutAt(reading.address);
    if (!log_ || !readout) return;
    // what fails waits, and is told when the sweep has ended
    (void)log_->append(day, csvRow({model_.site().name, *readout}, reading));
    sayLogged(day);
}

void SiteWindow::endLogOfSweep()
{
    logFailure_.clear();
    if (!log_) return;
    const auto written = log_->flush();
    if (!written) logFailure_ = QString::fromStdString(written.error());
}

void SiteWindow::endLog()
{
    if (!log_) return;
    if (const auto written = log_->flush(); !written)
        tell(QString::fromStdString(written.error()) + u' ' + tr("The readings that it lacks are lost."));
    log_.reset();
    logFailure_.clear();
    logged_.clear();
    logged_.setToolTip({});
}

void SiteWindow::sayLogged(const QDate& day)
{
    const auto words = QString::fromStdString(files::inWords(log_->fileOf(day)));
    logged_.setText(tr("Each reading is added to %1.").arg(words));
    logged_.setToolTip(words);
}

} // namespace quorvel::site
