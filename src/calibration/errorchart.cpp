#include "calibration/errorchart.h"

#include "chart/chart.h"
#include "chart/export.h"
#include "link/bytes.h"

#include <QVBoxLayout>

#include <algorithm>

namespace quorvel::calibration {

namespace {

constexpr chart::Role kOfCurve[] = {chart::Role::First, chart::Role::Second, chart::Role::Third,
                                    chart::Role::Behind};
constexpr double kAround = 0.14; // of an axis, left free at each end
constexpr double kDotSize = 6;
constexpr double kRoomForLegend = 0.35; // of the axis

} // namespace

ErrorChart::ErrorChart(QWidget* parent) : QWidget(parent), plot_(new chart::Chart(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(plot_);
    plot_->xAxis->setLabel(tr("Dial reading in mm"));
    plot_->yAxis->setLabel(tr("Error in mm"));
    plot_->setAutoAddPlottableToLegend(false);
    plot_->axisRect()->insetLayout()->setInsetAlignment(0, Qt::AlignTop | Qt::AlignLeft);
    plot_->legend->setVisible(true);
    plot_->dress();
    setAccessibleName(tr("Chart of the errors"));
}

void ErrorChart::addCurve(const QString& name, const ColumnJudged& column, bool isHollow)
{
    auto* curve = plot_->addGraph();
    curve->setName(name);
    const auto shape = isHollow ? QCPScatterStyle::ssCircle : QCPScatterStyle::ssDisc;
    for (const auto& point : column.points) {
        if (point.dial && point.error) curve->addData(*point.dial, *point.error);
    }
    plot_->give(curve, kOfCurve[static_cast<std::size_t>(shown_) % std::size(kOfCurve)]);
    curve->setScatterStyle({shape, kDotSize});
    curve->addToLegend();
    ++shown_;
}

void ErrorChart::addLimit(double mm)
{
    auto* limit = plot_->addGraph();
    const auto across = plot_->xAxis->range();
    limit->addData(across.lower, mm);
    limit->addData(across.upper, mm);
    plot_->give(limit, chart::Role::Mark);
    auto pen = limit->pen();
    pen.setStyle(Qt::DashLine);
    limit->setPen(pen);
    if (mm < 0) return;
    limit->setName(tr("Permitted"));
    limit->addToLegend();
}

void ErrorChart::scale()
{
    for (auto* axis : {plot_->xAxis, plot_->yAxis}) {
        axis->rescale();
        auto range = axis->range();
        if (range.size() <= 0) range = QCPRange(range.center() - 1, range.center() + 1);
        axis->setRange(range.lower - kAround * range.size(), range.upper + kAround * range.size());
    }
}

void ErrorChart::show(const std::vector<RunJudged>& runs, const std::optional<double>& tolerance)
{
    plot_->legend->clearItems();
    plot_->clearPlottables();
    shown_ = 0;
    QStringList spoken;
    for (const auto& run : runs) {
        for (const auto& column : run.columns) {
            if (!column.worst) continue;
            auto name = QString::fromLatin1(kRuns[static_cast<std::size_t>(run.kind)].name);
            if (run.columns.size() > 1) name += u' ' + link::shown(column.column);
            addCurve(name, column, run.kind == RunKind::Found);
            spoken << name + QStringLiteral(": ") + run.verdict;
        }
    }
    scale();
    if (tolerance && shown_ > 0) {
        addLimit(*tolerance);
        addLimit(-*tolerance);
        const auto across = plot_->xAxis->range();
        scale();
        plot_->xAxis->setRange(across);
    }
    plot_->yAxis->setRangeUpper(plot_->yAxis->range().upper + kRoomForLegend * plot_->yAxis->range().size());
    plot_->legend->setVisible(shown_ > 0);
    setAccessibleDescription(spoken.join(u'\n'));
    plot_->dress();
    plot_->replot();
}

QImage ErrorChart::picture(const QSize& size) { return chart::picture(*plot_, size); }

} // namespace quorvel::calibration
