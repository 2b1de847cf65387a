#pragma once

#include "calibration/judgement.h"

#include <QImage>
#include <QWidget>

#include <optional>
#include <vector>

namespace quorvel::chart {
class Chart;
} // namespace quorvel::chart

namespace quorvel::calibration {

/// Shows the errors of the runs before and after the download over the dial readings, between the lines of what is
/// permitted.
class ErrorChart final : public QWidget {
    Q_OBJECT
public:
    explicit ErrorChart(QWidget* parent = nullptr);

    /// Shows the errors of these runs in place of those before; runs without errors leave no trace.
    void show(const std::vector<RunJudged>& runs, const std::optional<double>& tolerance);
    /// Curves shown.
    int count() const { return shown_; }
    /// The chart on paper, for a chart that is not shown.
    QImage picture(const QSize& size);

private:
    void addCurve(const QString& name, const ColumnJudged& column, bool isHollow);
    void addLimit(double mm);
    void scale();

    chart::Chart* plot_;
    int shown_ = 0;
};

} // namespace quorvel::calibration
