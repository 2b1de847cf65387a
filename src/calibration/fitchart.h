#pragma once

#include "calibration/fit.h"
#include "chart/colours.h"

#include <QImage>
#include <QString>
#include <QWidget>

class QCPAxisRect;
class QCPGraph;
class QLabel;

namespace quorvel::chart {
class Chart;
} // namespace quorvel::chart

namespace quorvel::calibration {

/// One fitted column of readings.
struct FittedReading {
    QString name;
    Points points;
    Fit fit;
};

/// Shows what a fit found: above, the points and their line; below, the residuals, the largest marked; and below the
/// chart the numbers of the fit, which stay when the box that told them is closed.
class FitChart final : public QWidget {
    Q_OBJECT
public:
    explicit FitChart(QWidget* parent = nullptr);

    /// Adds a fit beside those shown.
    void add(const FittedReading& fitted);
    /// Empties the chart.
    void clear();
    /// Fits shown.
    int count() const { return shown_; }
    /// The chart on paper, without the numbers, for a chart that is not shown.
    QImage picture(const QSize& size);

private:
    void addAxes();
    QCPGraph* addGraph(QCPAxisRect* rect, chart::Role role);
    void addPoints(const FittedReading& fitted, chart::Role role);
    void addResiduals(const FittedReading& fitted, chart::Role role);
    void markWorst(double x, double y);
    void addNumbers(const FittedReading& fitted);

    chart::Chart* plot_;
    QCPAxisRect* above_;
    QCPAxisRect* below_;
    QLabel* numbers_;
    int shown_ = 0;
};

} // namespace quorvel::calibration
