#pragma once

#include "chart/plot.h"
#include "grayscale/axes.h"

#include <map>

namespace quorvel::grayscale {

/// Labels an axis with texts of its own. Where a zoomed view holds fewer than three of them, numbers fill it.
class LabelTicker final : public QCPAxisTicker {
public:
    /// @param wordsLower  texts that are not numbers are one line lower, clear of the numbers beside them.
    /// @param steps       how many numbers fill the axis where it carries no texts of its own.
    LabelTicker(bool wordsLower, int steps);

    /// A label added twice at one place shows once.
    void setLabels(std::vector<AxisLabel> labels);
    /// All labels, in the order in which they were set.
    const std::vector<AxisLabel>& labels() const { return labels_; }

protected:
    QVector<double> createTickVector(double tickStep, const QCPRange& range) override;
    QString getTickLabel(double tick, const QLocale& locale, QChar formatChar, int precision) override;

private:
    bool wordsLower_;
    std::vector<AxisLabel> labels_;
    std::map<double, QString> texts_;
};

} // namespace quorvel::grayscale
