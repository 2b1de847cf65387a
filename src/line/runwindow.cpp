#include "line/runwindow.h"

#include "link/bytes.h"
#include "main/inputfilter.h"
#include "main/progress.h"
#include "text/duration.h"

#include <QHBoxLayout>
#include <QScopeGuard>
#include <QVBoxLayout>

#include <algorithm>

namespace quorvel::line {

namespace {

constexpr int kTick = 250; // ms

/// The test is not offered in the windows of the tests.
Workplace withoutOffer(const Workplace& workplace)
{
    return {workplace.bench, workplace.module1, workplace.gate, workplace.messages};
}

} // namespace

RunWindow::RunWindow(const Workplace& workplace, const QString& name, const QString& startCaption,
                     QWidget* parent)
    : BusWindow(withoutOffer(workplace), parent), start_(startCaption), stop_(tr("Stop"))
{
    setObjectName(name);
    start_.setObjectName(nameOf("Start"));
    start_.setDefault(true);
    stop_.setObjectName(nameOf("Stop"));
    stop_.setAutoDefault(false);
    stop_.setEnabled(false);
    InputFilter::letThrough(&stop_);
    InputFilter::letFocusMove(this);
    connect(&stop_, &QPushButton::clicked, this, [this] { stopAsked_ = true; });
    progress_.setObjectName(nameOf("Progress"));
    progress_.setAccessibleName(tr("Progress"));
    emptyBar(progress_);
    tick_.setInterval(kTick);
    connect(&tick_, &QTimer::timeout, this, &RunWindow::tick);
}

void RunWindow::addButtons(QHBoxLayout& row)
{
    row.addWidget(&start_);
    row.addWidget(&stop_);
}

void RunWindow::addProgress(QVBoxLayout& rows)
{
    rows.addWidget(&progress_);
    rows.addWidget(&status_);
    useStatusLine(status_);
}

void RunWindow::addButton(QHBoxLayout& row, QPushButton& button, const QString& caption, const char* name,
                          const std::function<void()>& handler)
{
    button.setText(caption);
    button.setObjectName(nameOf(name));
    button.setAutoDefault(false);
    connect(&button, &QPushButton::clicked, this, handler);
    row.addWidget(&button);
}

void RunWindow::onStart(const std::function<void()>& run)
{
    onClick(&start_, [this, run] {
        setRunning(true);
        const auto ended = qScopeGuard([this] { setRunning(false); });
        run();
    });
}

void RunWindow::setRunning(bool on)
{
    stopAsked_ = false;
    const bool focused = start_.hasFocus() || stop_.hasFocus();
    stop_.setEnabled(on);
    start_.setEnabled(!on);
    if (focused) (on ? stop_ : start_).setFocus();
    if (on) return tick_.start();
    tick_.stop();
    progress_.setFormat(QString());
}

void RunWindow::showTime(int done, int total, double secondsLeft)
{
    end_ = module1_.clock().now().addMSecs(static_cast<qint64>(secondsLeft * 1000));
    progress_.setMaximum(total);
    progress_.setValue(done);
    tick();
}

void RunWindow::tick()
{
    const auto left = static_cast<double>(module1_.clock().now().msecsTo(end_)) / 1000;
    progress_.setFormat(link::shown(text::timeLeft(std::max(left, 0.0))));
}

} // namespace quorvel::line
