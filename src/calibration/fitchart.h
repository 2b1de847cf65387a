#pragma once

#include "calibration/fit.h"

#include <QString>
#include <QWidget>

class QColor;
class QCPAxisRect;
class QCPGraph;
class QCustomPlot;

namespace quorvel::calibration {

/// One fitted column of readings.
struct FittedReading {
    QString name;
    Points points;
    Fit fit;
};

/// Shows what a fit found: above, the points and their line; below, the residuals, the largest marked.
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

private:
    void addAxes();
    QCPGraph* addGraph(QCPAxisRect* rect, const QColor& color);
    void addPoints(const FittedReading& fitted, const QColor& color);
    void addResiduals(const FittedReading& fitted, const QColor& color);
    void markWorst(double x, double y);

    QCustomPlot* plot_;
    QCPAxisRect* above_;
    QCPAxisRect* below_;
    int shown_ = 0;
};

} // namespace quorvel::calibration
