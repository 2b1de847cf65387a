#include "site/trendchart.h"

#include <QAccessibleWidget>

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvel::site {

namespace {

using chart::Role;
using protocol::Sensor;

constexpr std::array<Sensor, 2> kDrawn{Sensor::X, Sensor::Y};
constexpr std::array<Role, 3> kRoles{Role::First, Role::Second, Role::Third};
constexpr std::array<Qt::PenStyle, 4> kStyles{Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine};
constexpr double kThick = 2.2;
constexpr double kThin = 1;   // wider ones are drawn many times slower
constexpr int kFewCurves = 6; // are drawn smooth
constexpr int kPathParts = 500;
constexpr double kMargin = 0.06;    // above and below the values, of their range
constexpr double kFewestMm = 0.001; // noise of a quiet readout does not fill the height
constexpr double kPlaceSize = 9;
constexpr double kTimeShare = 1.7; // of the width, beside the path

/// Screen readers are told that this is a chart.
QAccessibleInterface* accessibleTrend(const QString& /*className*/, QObject* object)
{
    auto* chart = qobject_cast<TrendChart*>(object);
    return chart ? new QAccessibleWidget(chart, QAccessible::Chart) : nullptr;
}

/// Where values lie. A QCPRange cannot be empty.
struct Extent {
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -std::numeric_limits<double>::infinity();

    void take(double value)
    {
        if (std::isnan(value)) return;
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
};

/// A range with air around the values.
QCPRange aired(const Extent& values)
{
    if (values.lowest > values.highest) return {-1, 1};
    const double size = values.highest - values.lowest;
    const double air = std::max(size * kMargin, (kFewestMm - size) / 2);
    return {values.lowest - air, values.highest + air};
}

/// The readings between two gaps, which no line goes to.
QVector<QCPGraphData> aloneIn(const QVector<QCPGraphData>& drawn)
{
    const auto isThere = [&](qsizetype i) {
        return i >= 0 && i < drawn.size() && !std::isnan(drawn[i].value);
    };
    QVector<QCPGraphData> alone;
    for (qsizetype i = 0; i < drawn.size(); ++i) {
        if (isThere(i) && !isThere(i - 1) && !isThere(i + 1)) alone.append(drawn[i]);
    }
    return alone;
}

/// Gives an axis the range of these values. Without any it has no figures that somebody could take for some.
void scale(QCPAxis& axis, const Extent& values)
{
    axis.setRange(aired(values));
    axis.setTickLabels(values.lowest <= values.highest);
}

} // namespace

TrendChart::TrendChart(const Trend& trend, QWidget* parent)
    : Chart(parent), trend_(trend), ticker_(wholeSeconds())
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleTrend);
        return true;
    }();
    setObjectName(QStringLiteral("SiteTrend"));
    setAccessibleName(tr("Trend"));
    setAccessibleDescription(tr("Arrows move mark A, with Shift mark B, with Control by ten; up and down "
                                "choose the readout; plus and minus "
                                "zoom, Page Up and Page Down move, Home shows all."));
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::CrossCursor);
    setMinimumHeight(220);
    plotLayout()->clear();
    auto* left = new QCPLayoutGrid;
    const std::array<QString, 2> labels{tr("X mm"), tr("Y mm")};
    for (std::size_t i = 0; i < times_.size(); ++i) {
        times_.at(i) = new QCPAxisRect(this);
        setUpTime(*times_.at(i), labels.at(i));
        left->addElement(static_cast<int>(i), 0, times_.at(i));
    }
    auto* group = new QCPMarginGroup(this);
    for (auto* rect : times_)
        rect->setMarginGroup(QCP::msLeft | QCP::msRight, group);
    place_ = new QCPAxisRect(this);
    place_->axis(QCPAxis::atBottom)->setLabel(labels[0]);
    place_->axis(QCPAxis::atLeft)->setLabel(labels[1]);
    plotLayout()->addElement(0, 0, left);
    plotLayout()->addElement(0, 1, place_);
    auto* side = new QCPLayoutGrid;
    plotLayout()->addElement(0, 2, side);
    legend = new QCPLegend;
    side->addElement(0, 0, legend);
    more_ = new QCPTextElement(this);
    side->addElement(1, 0, more_);
    plotLayout()->setColumnStretchFactor(0, kTimeShare);
    plotLayout()->setColumnStretchFactor(2, 0.001);     // as narrow as its texts
    side->addElement(2, 0, new QCPLayoutElement(this)); // takes the height that is left
    side->setRowStretchFactor(0, 0.001);
    setAutoAddPlottableToLegend(false);
    setUpMarks();
    dress();
}

void TrendChart::setUpTime(QCPAxisRect& rect, const QString& label)
{
    rect.axis(QCPAxis::atBottom)->setTicker(ticker_);
    rect.axis(QCPAxis::atLeft)->setLabel(label);
    rect.setRangeDrag(Qt::Horizontal);
    setInteraction(QCP::iRangeDrag);
    const bool first = &rect == times_[0];
    rect.axis(QCPAxis::atBottom)->setTickLabels(!first);
    // both show the same time
    connect(rect.axis(QCPAxis::atBottom), qOverload<const QCPRange&>(&QCPAxis::rangeChanged), this,
            [this](const QCPRange& range) {
                for (auto* other : times_) {
                    if (other) other->axis(QCPAxis::atBottom)->setRange(range);
                }
            });
}

void TrendChart::setUpMarks()
{
    constexpr std::array<const char*, kMarks> kLetters{"A", "B"};
    for (std::size_t i = 0; i < kMarks; ++i) {
        auto& shown = shown_.at(i);
        for (std::size_t rect = 0; rect < times_.size(); ++rect) {
            auto* axes = times_.at(rect);
            auto* line = new QCPItemStraightLine(this);
            for (auto* end : {line->point1, line->point2}) {
                end->setAxisRect(axes);
                end->setAxes(axes->axis(QCPAxis::atBottom), axes->axis(QCPAxis::atLeft));
            }
            line->setClipAxisRect(axes);
            shown.lines.at(rect) = line;
        }
        shown.letter = new QCPItemText(this);
        shown.letter->setText(QLatin1String(kLetters.at(i)));
        shown.letter->position->setAxisRect(times_[0]);
        shown.letter->position->setAxes(times_[0]->axis(QCPAxis::atBottom), nullptr);
        shown.letter->position->setTypeX(QCPItemPosition::ptPlotCoords);
        shown.letter->position->setTypeY(QCPItemPosition::ptAxisRectRatio);
        shown.letter->setPositionAlignment(Qt::AlignLeft | Qt::AlignTop);
        shown.letter->setPadding({3, 0, 0, 0});
        shown.letter->setClipAxisRect(times_[0]);
        give(shown.letter, Role::Mark);
        shown.place = addGraph(place_->axis(QCPAxis::atBottom), place_->axis(QCPAxis::atLeft));
        shown.place->setLineStyle(QCPGraph::lsNone);
        shown.place->setScatterStyle(
            {i == A ? QCPScatterStyle::ssCircle : QCPScatterStyle::ssSquare, kPlaceSize});
        give(shown.place, Role::Mark);
    }
    showMarks();
}

void TrendChart::setCurves(const std::vector<TrendCurve>& curves)
{
    const int before = current() >= 0 ? curves_[static_cast<std::size_t>(current_)].address : 0;
    for (auto& drawn : drawn_) {
        for (const auto& graphs : {drawn.overTime, drawn.alone}) {
            for (auto* graph : graphs)
                removeGraph(graph);
        }
        removePlottable(drawn.path);
    }
    legend->clearItems();
    drawn_.clear();
    curves_ = curves;
    current_ = 0;
    for (std::size_t i = 0; i < curves_.size(); ++i) {
        if (curves_[i].address == before) current_ = static_cast<int>(i);
        Drawn drawn;
        for (std::size_t rect = 0; rect < times_.size(); ++rect) {
            auto* axes = times_.at(rect);
            for (auto* graphs : {&drawn.overTime, &drawn.alone})
                graphs->at(rect) = addGraph(axes->axis(QCPAxis::atBottom), axes->axis(QCPAxis::atLeft));
            drawn.alone.at(rect)->setLineStyle(QCPGraph::lsNone);
            drawn.alone.at(rect)->setScatterStyle(QCPScatterStyle::ssDisc);
        }
        drawn.path = new QCPCurve(place_->axis(QCPAxis::atBottom), place_->axis(QCPAxis::atLeft));
        drawn.overTime[0]->setName(curves_[i].name);
        if (i < kMostInLegend) drawn.overTime[0]->addToLegend(legend);
        drawn_.push_back(drawn);
    }
    const auto more = static_cast<int>(curves_.size()) - kMostInLegend;
    more_->setText(more > 0 ? tr("and %1 more").arg(more) : QString());
    legend->setVisible(!curves_.empty());
    for (std::size_t i = 0; i < drawn_.size(); ++i)
        style(drawn_[i], static_cast<int>(i));
    dress();
    refresh();
}

void TrendChart::style(Drawn& drawn, int curve)
{
    const auto place = static_cast<std::size_t>(curve);
    const auto role = kRoles.at(place % kRoles.size());
    QPen pen;
    pen.setStyle(kStyles.at(place / kRoles.size() % kStyles.size()));
    pen.setWidthF(curve == current_ ? kThick : kThin);
    const bool smooth = curves_.size() <= kFewCurves;
    for (auto* plottable : std::initializer_list<QCPAbstractPlottable*>{
             drawn.overTime[0], drawn.overTime[1], drawn.alone[0], drawn.alone[1], drawn.path}) {
        plottable->setPen(pen);
        plottable->setAntialiased(smooth);
        give(plottable, role);
    }
}

void TrendChart::dressed(const chart::Colours& colours)
{
    QPen pen(colours.of(Role::Mark));
    for (std::size_t i = 0; i < kMarks; ++i) {
        pen.setStyle(i == A ? Qt::SolidLine : Qt::DashLine);
        for (auto* line : shown_.at(i).lines) {
            if (line) line->setPen(pen);
        }
    }
    if (more_) more_->setFont(font());
}

void TrendChart::setRelative(bool relative)
{
    relative_ = relative;
    draw();
}

void TrendChart::draw()
{
    fill();
    showMarks();
    formatTime();
    replot(rpQueuedReplot);
    Q_EMIT changed();
}

std::array<double, 2> TrendChart::baseOf(const TrendPoints& points) const
{
    std::array<double, 2> base{};
    if (!relative_) return base;
    const auto [first, last] = within(points, span());
    for (std::size_t i = 0; i < kDrawn.size(); ++i) {
        const auto found =
            std::find_if(first, last, [&](const TrendPoint& p) { return !std::isnan(p.of(kDrawn.at(i))); });
        if (found != last) base.at(i) = found->of(kDrawn.at(i));
    }
    return base;
}

void TrendChart::fill()
{
    const auto inSight = span();
    const int parts = std::max(times_[0]->width(), 100);
    for (std::size_t curve = 0; curve < drawn_.size(); ++curve) {
        const auto& points = trend_.of(curves_[curve].address);
        const auto base = baseOf(points);
        for (std::size_t i = 0; i < kDrawn.size(); ++i) {
            QVector<QCPGraphData> drawn;
            for (const auto& [time, mm] : thinned(points, kDrawn.at(i), inSight, parts))
                drawn.append({time, mm - base.at(i)});
            drawn_[curve].overTime.at(i)->data()->set(drawn, true);
            drawn_[curve].alone.at(i)->data()->set(aloneIn(drawn), true);
        }
        fillPath(*drawn_[curve].path, points, base);
    }
    scaleValues();
}

void TrendChart::fillPath(QCPCurve& path, const TrendPoints& points, const std::array<double, 2>& base)
{
    QVector<QCPCurveData> drawn;
    double order = 0;
    for (const auto& [x, y] : pathOf(points, span(), kPathParts)) {
        if (!std::isnan(x) && !std::isnan(y)) drawn.append({order++, x - base[0], y - base[1]});
    }
    path.data()->set(drawn, true);
    path.setScatterStyle(drawn.size() == 1 ? QCPScatterStyle::ssDisc : QCPScatterStyle::ssNone);
}

void TrendChart::scaleValues()
{
    const auto inSight = span();
    Extent across;
    Extent up;
    for (std::size_t i = 0; i < times_.size(); ++i) {
        Extent range;
        for (const auto& drawn : drawn_) {
            for (const auto& point : *drawn.overTime.at(i)->data()) {
                if (point.key >= inSight.from && point.key <= inSight.to) range.take(point.value);
            }
        }
        scale(*times_.at(i)->axis(QCPAxis::atLeft), range);
    }
    for (const auto& drawn : drawn_) {
        for (const auto& point : *drawn.path->data()) {
            across.take(point.key);
            up.take(point.value);
        }
    }
    auto* bottom = place_->axis(QCPAxis::atBottom);
    auto* left = place_->axis(QCPAxis::atLeft);
    scale(*bottom, across);
    scale(*left, up);
    // a millimetre is as long in both directions
    const double perPixelAcross = bottom->range().size() / std::max(place_->width(), 1);
    const double perPixelUp = left->range().size() / std::max(place_->height(), 1);
    if (perPixelAcross > perPixelUp) {
        left->setScaleRatio(bottom, 1);
    } else {
        bottom->setScaleRatio(left, 1);
    }
}

} // namespace quorvel::site
