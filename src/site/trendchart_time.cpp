// The time that the trend shows: all of it, so much up to the newest reading, or where somebody moved it.

#include "site/trendchart.h"

#include <algorithm>
#include <cmath>

namespace quorvel::site {

namespace {

constexpr double kShortestSpan = 10; // s
constexpr double kWidest = 3;        // times the readings' own span
constexpr double kDay = 86400;

/// Ticks at whole seconds, as their texts say; the plot's own would be 2.5 s apart.
class WholeSeconds final : public QCPAxisTickerDateTime {
protected:
    double getTickStep(const QCPRange& range) override
    {
        return std::max(std::floor(QCPAxisTickerDateTime::getTickStep(range)), 1.0);
    }
};

} // namespace

QSharedPointer<QCPAxisTickerDateTime> TrendChart::wholeSeconds()
{
    return QSharedPointer<WholeSeconds>::create();
}

std::optional<Span> TrendChart::whole() const
{
    std::optional<Span> all;
    for (const auto& curve : curves_) {
        const auto& points = trend_.of(curve.address);
        if (points.empty()) continue;
        if (!all) all = Span{points.front().time, points.back().time};
        all->from = std::min(all->from, points.front().time);
        all->to = std::max(all->to, points.back().time);
    }
    if (all && all->to - all->from < kShortestSpan) all->to = all->from + kShortestSpan;
    return all;
}

Span TrendChart::span() const
{
    const auto range = times_[0]->axis(QCPAxis::atBottom)->range();
    return {range.lower, range.upper};
}

void TrendChart::refresh()
{
    const auto all = whole();
    if (all && follows_) {
        const double from = latest_ > 0 ? all->to - latest_ : all->from;
        times_[0]->axis(QCPAxis::atBottom)->setRange(from, all->to);
    }
    draw();
}

void TrendChart::showLatest(double seconds)
{
    latest_ = seconds;
    follows_ = true;
    refresh();
}

/// What is asked for, moved and narrowed so that readings stay in sight.
Span TrendChart::held(const Span& asked, const Span& all)
{
    const double middle = (asked.from + asked.to) / 2;
    const double widest = kWidest * (all.to - all.from);
    const auto seen = asked.to - asked.from > widest ? Span{middle - widest / 2, middle + widest / 2} : asked;
    const double back = std::clamp(middle, all.from, all.to) - middle;
    return {seen.from + back, seen.to + back};
}

void TrendChart::showSpan(const Span& asked)
{
    const auto all = whole();
    if (!all || asked.to - asked.from < kShortestSpan) return;
    const auto seen = held(asked, *all);
    follows_ = seen.to >= all->to;
    latest_ = seen.from <= all->from ? 0 : seen.to - seen.from;
    times_[0]->axis(QCPAxis::atBottom)->setRange(seen.from, seen.to);
    draw();
}

void TrendChart::formatTime()
{
    const auto inSight = span();
    const double seconds = inSight.to - inSight.from;
    times_[1]->axis(QCPAxis::atBottom)->setTickLabels(whole().has_value());
    ticker_->setDateTimeFormat(seconds > 2 * kDay    ? QStringLiteral("MM-dd\nHH:mm")
                               : seconds > kDay / 24 ? QStringLiteral("HH:mm\nMM-dd")
                                                     : QStringLiteral("HH:mm:ss\nMM-dd"));
}

} // namespace quorvel::site
