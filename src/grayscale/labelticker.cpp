#include "grayscale/labelticker.h"

#include "text/number.h"

#include <cmath>

namespace quorvel::grayscale {

namespace {

constexpr int kFewestLabels = 3;

/// Binary sums of decimal steps end in digits such as 12.300000000000001.
constexpr double kLabelResolution = 1e6;

} // namespace

LabelTicker::LabelTicker(bool wordsLower, int steps) : wordsLower_(wordsLower) { setTickCount(steps); }

void LabelTicker::setLabels(std::vector<AxisLabel> labels)
{
    labels_ = std::move(labels);
    texts_.clear();
    for (const auto& label : labels_) {
        const bool lower = wordsLower_ && !text::isNumber(label.text);
        texts_[label.at] = (lower ? QStringLiteral("\n") : QString()) + QString::fromStdString(label.text);
    }
}

QVector<double> LabelTicker::createTickVector(double tickStep, const QCPRange& range)
{
    QVector<double> ticks;
    for (const auto& [at, label] : texts_) {
        if (range.contains(at)) ticks << at;
    }
    return ticks.size() < kFewestLabels ? QCPAxisTicker::createTickVector(tickStep, range) : ticks;
}

QString LabelTicker::getTickLabel(double tick, const QLocale& /*locale*/, QChar /*formatChar*/,
                                  int /*precision*/)
{
    const auto own = texts_.find(tick);
    if (own != texts_.end()) return own->second;
    return QString::fromStdString(text::general(std::round(tick * kLabelResolution) / kLabelResolution));
}

} // namespace quorvel::grayscale
