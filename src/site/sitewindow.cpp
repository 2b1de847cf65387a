#include "site/sitewindow.h"

#include "main/inputfilter.h"

#include <QEvent>

#include <algorithm>

namespace quorvel::site {

namespace {

constexpr int kTickMs = 200;

/// Whose address "Why no answer?" would test is not known here.
Workplace withoutTest(const Workplace& workplace)
{
    return {workplace.bench, workplace.module1, workplace.gate, workplace.messages};
}

} // namespace

SiteWindow::SiteWindow(const Workplace& workplace, Surroundings surroundings, QWidget* parent)
    : BusWindow(withoutTest(workplace), parent), model_(module1_.clock(), surroundings.line),
      surroundings_(std::move(surroundings))
{
    setObjectName(QLatin1String(kName));
    setWindowFlag(Qt::WindowMinMaxButtonsHint);
    // It is looked at and edited while its sweeps run.
    InputFilter::letThrough(this);
    layOut();
    connect(&model_, &SiteModel::edited, this, [this] {
        setChanged(true);
        chooseCurves();
    });
    connect(&model_, &SiteModel::refused, this, &SiteWindow::tell);
    connect(&tick_, &QTimer::timeout, this, &SiteWindow::look);
    tick_.start(kTickMs);
    if (parent) parent->window()->installEventFilter(this);
    putSite(Site(), QString());
}

SiteWindow::~SiteWindow() = default;

void SiteWindow::look()
{
    if (running_) return;
    model_.refreshAges();
    if (schedule_ && module1_.clock().now() >= due_) sweepWhenDue();
    waitForDue();
}

QString SiteWindow::standing() const
{
    if (!module1_.port().PortOpen()) return tr("The port is closed. Press \"OpenComm\" in the main window.");
    if (model_.rowCount() == 0) {
        return tr("\"New from Search\" takes what the last search of the main window found, \"Open ...\" a "
                  "file, \"Add "
                  "Readout\" one readout.");
    }
    return running_ ? tr("The readouts are asked one after the other. \"Stop\" ends that.")
                    : tr("\"Sweep\" asks each readout once.");
}

bool SiteWindow::mayClose()
{
    const auto question =
        schedule_ ? tr("Sweeps repeat every %1 s. End them and close the window?").arg(seconds_.value())
                  : QString();
    if (!question.isEmpty() && !messages_.ask(this, question)) return false;
    return mayLoseChanges(tr("The site has changes that are not saved. Close all the same?"));
}

void SiteWindow::done(int result)
{
    endSchedule();
    setChanged(false);
    BusWindow::done(result);
}

/// The main window takes this one with it.
bool SiteWindow::eventFilter(QObject* watched, QEvent* event)
{
    const bool ends = event->type() == QEvent::Close && parentWidget() && watched == parentWidget()->window();
    if (ends && isVisible() &&
        !mayLoseChanges(
            tr("The window \"Site\" has changes that are not saved. End the program all the same?"))) {
        event->ignore();
        return true;
    }
    return BusWindow::eventFilter(watched, event);
}

} // namespace quorvel::site
