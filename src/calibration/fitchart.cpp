#include "calibration/fitchart.h"

#include "chart/chart.h"
#include "chart/export.h"
#include "link/bytes.h"
#include "text/number.h"

#include <QLabel>
#include <QVBoxLayout>

namespace quorvel::calibration {

namespace {

using chart::Role;

constexpr Role kRoles[] = {Role::First, Role::Second}; // of the first and the second column of readings
constexpr double kMargin = 0.14;                       // of an axis, left free at each end
constexpr double kHeightAbove = 1.6;                   // of the upper part, when the lower is 1

QCPAxis* across(QCPAxisRect* rect) { return rect->axis(QCPAxis::atBottom); }
QCPAxis* upward(QCPAxisRect* rect) { return rect->axis(QCPAxis::atLeft); }

void showAll(QCPAxis* axis)
{
    axis->rescale();
    auto range = axis->range();
    if (range.size() <= 0) range = QCPRange(range.center() - 1, range.center() + 1);
    axis->setRange(range.lower - kMargin * range.size(), range.upper + kMargin * range.size());
}

} // namespace

FitChart::FitChart(QWidget* parent)
    : QWidget(parent), plot_(new chart::Chart(this)), above_(new QCPAxisRect(plot_)),
      below_(new QCPAxisRect(plot_)), numbers_(new QLabel(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(plot_, 1);
    layout->addWidget(numbers_);
    numbers_->setObjectName(QStringLiteral("Numbers"));
    numbers_->setTextFormat(Qt::PlainText);
    numbers_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    numbers_->setWordWrap(true);
    numbers_->hide();
    addAxes();
    setAccessibleName(tr("Chart of the fit"));
}

void FitChart::addAxes()
{
    auto* parts = plot_->plotLayout();
    parts->clear();
    parts->addElement(0, 0, above_);
    parts->addElement(1, 0, below_);
    parts->setRowStretchFactor(0, kHeightAbove);
    auto* margins = new QCPMarginGroup(plot_);
    for (auto* rect : {above_, below_}) {
        rect->setMarginGroup(QCP::msLeft, margins);
        for (auto* axis : rect->axes()) {
            axis->setLayer(QStringLiteral("axes"));
            axis->grid()->setLayer(QStringLiteral("grid"));
        }
    }
    upward(above_)->setLabel(tr("Reading in mm"));
    upward(below_)->setLabel(tr("Residual in mm"));
    across(below_)->setLabel(tr("Rule_Data in mm"));
    plot_->legend = new QCPLegend;
    above_->insetLayout()->addElement(plot_->legend, Qt::AlignTop | Qt::AlignLeft);
    plot_->legend->setLayer(QStringLiteral("legend"));
    plot_->setAutoAddPlottableToLegend(false);
    plot_->dress();
}

void FitChart::clear()
{
    if (shown_ == 0) return;
    shown_ = 0;
    plot_->legend->clearItems();
    plot_->clearPlottables();
    plot_->clearItems();
    setAccessibleDescription(QString());
    numbers_->clear();
    numbers_->hide();
    plot_->replot();
}

QCPGraph* FitChart::addGraph(QCPAxisRect* rect, chart::Role role)
{
    auto* graph = plot_->addGraph(across(rect), upward(rect));
    plot_->give(graph, role);
    return graph;
}

void FitChart::addPoints(const FittedReading& fitted, chart::Role role)
{
    auto* points = addGraph(above_, role);
    points->setLineStyle(QCPGraph::lsNone);
    points->setScatterStyle({QCPScatterStyle::ssDisc, 5});
    auto* line = addGraph(above_, role);
    for (const auto& point : fitted.points) {
        const double x = point.dial;
        points->addData(x, point.reading);
        line->addData(x, static_cast<double>(fitted.fit.slope) * x + fitted.fit.intercept);
    }
    points->setName(fitted.name);
    line->setName(link::shown(lineText(fitted.fit)));
    points->addToLegend();
    line->addToLegend();
}

void FitChart::addResiduals(const FittedReading& fitted, chart::Role role)
{
    auto* stems = addGraph(below_, role);
    stems->setLineStyle(QCPGraph::lsImpulse);
    stems->setScatterStyle({QCPScatterStyle::ssDisc, 5});
    for (std::size_t i = 0; i < fitted.points.size(); ++i) {
        stems->addData(fitted.points[i].dial, fitted.fit.residuals[i]);
    }
    const auto worst = static_cast<std::size_t>(fitted.fit.worst);
    markWorst(fitted.points[worst].dial, fitted.fit.residuals[worst]);
}

void FitChart::markWorst(double x, double y)
{
    auto* ring = addGraph(below_, Role::Mark);
    auto pen = ring->pen();
    pen.setWidth(2);
    ring->setPen(pen);
    ring->setLineStyle(QCPGraph::lsNone);
    ring->setScatterStyle({QCPScatterStyle::ssCircle, 12});
    ring->addData(x, y);
    auto* text = new QCPItemText(plot_);
    text->setClipAxisRect(below_);
    text->position->setAxisRect(below_);
    text->position->setAxes(across(below_), upward(below_));
    text->position->setCoords(x, y);
    text->setPositionAlignment(Qt::AlignVCenter |
                               (x > across(below_)->range().center() ? Qt::AlignRight : Qt::AlignLeft));
    text->setPadding({12, 0, 12, 0});
    plot_->give(text, Role::Mark);
    text->setText(link::shown(text::format(y, "0.0000")));
}

void FitChart::add(const FittedReading& fitted)
{
    const auto role = kRoles[static_cast<std::size_t>(shown_) % std::size(kRoles)];
    ++shown_;
    addPoints(fitted, role);
    // where the line is not
    above_->insetLayout()->setInsetAlignment(0, Qt::AlignTop |
                                                    (fitted.fit.slope < 0 ? Qt::AlignRight : Qt::AlignLeft));
    showAll(across(above_));
    showAll(upward(above_));
    across(below_)->setRange(across(above_)->range());
    addResiduals(fitted, role);
    showAll(upward(below_));
    setAccessibleDescription(accessibleDescription() + fitted.name + QStringLiteral(": ") +
                             link::shown(fitText(fitted.fit)) + QStringLiteral("\n"));
    addNumbers(fitted);
    plot_->replot();
}

void FitChart::addNumbers(const FittedReading& fitted)
{
    const auto line = tr("%1: %2, Nonlinear Error: %3 mm, Max Error: %4 mm, at point %5")
                          .arg(fitted.name, link::shown(lineText(fitted.fit)),
                               link::shown(text::format(fitted.fit.nonlinearError, "0.0000")),
                               link::shown(text::format(fitted.fit.maxError, "0.0000")))
                          .arg(fitted.fit.worst);
    numbers_->setText(numbers_->text().isEmpty() ? line : numbers_->text() + u'\n' + line);
    numbers_->show();
}

QImage FitChart::picture(const QSize& size) { return chart::picture(*plot_, size); }

} // namespace quorvel::calibration
