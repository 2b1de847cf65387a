#include "grayscale/tchart.h"

#include "text/number.h"

#include <QAccessibleWidget>

#include <algorithm>
#include <cmath>

namespace quorvel::grayscale {

namespace {

constexpr int kLevelPixels = 6; // a hand does not draw a level line
constexpr double kZoomStep = 1.25;
constexpr double kWheelNotch = 120; // in the unit of wheel events
constexpr double kMoveStep = 0.1;   // of what is seen
constexpr double kFewestMm = 0.05;
constexpr double kFewestLevels = 4;

constexpr int kPositionSteps = 10;
constexpr int kBrightnessSteps = 15;

/// Between the red lines of every direction, above what a pixel reaches.
constexpr QRectF kLegendPlace(0.64, 0.015, 0.28, 0.06);
constexpr int kBandAlpha = 40;

/// Screen readers are told that this is a chart.
QAccessibleInterface* accessibleChart(const QString& /*className*/, QObject* object)
{
    auto* chart = qobject_cast<TChart*>(object);
    return chart ? new QAccessibleWidget(chart, QAccessible::Chart) : nullptr;
}

/// `range` no narrower than `fewest`, no wider than `whole`, and with its middle inside `whole`.
QCPRange withinBounds(const QCPRange& range, const QCPRange& whole, double fewest)
{
    const double size = std::clamp(range.size(), std::min(fewest, whole.size()), whole.size());
    const double middle = std::clamp(range.center(), whole.lower, whole.upper);
    return {middle - size / 2, middle + size / 2};
}

/// `range` times `factor` around a place that stays where it is, until the whole or `fewest` is reached.
QCPRange zoomed(const QCPRange& range, double factor, double around, const QCPRange& whole, double fewest)
{
    if (range.size() * factor >= whole.size()) return whole;
    const double limited = std::max(factor, fewest / range.size());
    return {around + (range.lower - around) * limited, around + (range.upper - around) * limited};
}

/// The smallest rectangle with both points in it, whichever way one lies from the other.
QRect spanning(const QPoint& one, const QPoint& other)
{
    return {QPoint(std::min(one.x(), other.x()), std::min(one.y(), other.y())),
            QPoint(std::max(one.x(), other.x()), std::max(one.y(), other.y()))};
}

QString readoutText(int pixel, double position, double brightness)
{
    return TChart::tr("Pixel %1: %2 mm, %3")
        .arg(QString::number(pixel), QString::fromStdString(text::format(position, "0.000")),
             QString::number(brightness));
}

} // namespace

Gesture gestureOf(const QPoint& drag)
{
    const auto side = [](int pixels) { return std::abs(pixels) < kLevelPixels ? 0 : pixels > 0 ? 1 : -1; };
    const int across = side(drag.x());
    const int down = side(drag.y());
    if (across * down < 0 || (across == 0 && down == 0)) return Gesture::Nothing;
    return across + down > 0 ? Gesture::Extend : Gesture::Whole;
}

TChart::TChart(QWidget* parent)
    : Chart(parent), title_(new QCPTextElement(this)),
      positionTicker_(QSharedPointer<LabelTicker>::create(true, kPositionSteps)),
      brightnessTicker_(QSharedPointer<LabelTicker>::create(false, kBrightnessSteps))
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleChart);
        return true;
    }();
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
    setAccessibleDescription(tr("Plus and minus zoom, arrows move, Home shows the whole."));
    plotLayout()->insertRow(0);
    plotLayout()->addElement(0, 0, title_);
    setUpAxes();
    setUpLegend();
    dress();
}

// The grid hangs on the axes at the top and at the right, so that a label such as the unit draws no line of its own.
void TChart::setUpAxes()
{
    for (auto* axis : {xAxis, yAxis, xAxis2, yAxis2}) {
        axis->setSubTicks(false);
        axis->setVisible(true);
    }
    for (auto* axis : {xAxis2, yAxis2}) {
        axis->setTicks(false);
        axis->setTickLabels(false);
        axis->ticker()->setTickCount(axis == xAxis2 ? kPositionSteps : kBrightnessSteps);
        axis->grid()->setVisible(true);
    }
    xAxis->grid()->setVisible(false);
    yAxis->grid()->setVisible(false);
    xAxis->setTicker(positionTicker_);
    yAxis->setTicker(brightnessTicker_);
    const auto rangeChanged = qOverload<const QCPRange&>(&QCPAxis::rangeChanged);
    const auto setRange = qOverload<const QCPRange&>(&QCPAxis::setRange);
    connect(xAxis, rangeChanged, xAxis2, setRange);
    connect(yAxis, rangeChanged, yAxis2, setRange);
}

void TChart::setUpLegend()
{
    legend->setVisible(true);
    legend->setFillOrder(QCPLegend::foColumnsFirst);
    axisRect()->insetLayout()->setInsetPlacement(0, QCPLayoutInset::ipFree);
    axisRect()->insetLayout()->setInsetRect(0, kLegendPlace);
    setAutoAddPlottableToLegend(false);
}

void TChart::setTitle(const QString& title)
{
    title_->setText(title);
    setAccessibleName(title);
    replot();
}

void TChart::removeAllSeries()
{
    legend->clearItems();
    clearGraphs();
    pointed_ = -1;
    replot();
}

void TChart::addSeries(const QVector<double>& positions, const QVector<double>& values, chart::Role role,
                       const QString& legendText)
{
    auto* series = addGraph();
    series->setData(positions, values, true);
    give(series, role);
    series->setName(legendText);
    if (!legendText.isEmpty()) series->addToLegend();
}

void TChart::setPositionLabels(std::vector<AxisLabel> labels)
{
    positionTicker_->setLabels(std::move(labels));
}

void TChart::setBrightnessLabels(std::vector<AxisLabel> labels)
{
    brightnessTicker_->setLabels(std::move(labels));
}

void TChart::setWhole(const QCPRange& positions, const QCPRange& brightness)
{
    wholePositions_ = positions;
    wholeBrightness_ = brightness;
    showWhole();
}

void TChart::showWhole() { showPart(wholePositions_, wholeBrightness_); }

void TChart::showPart(QCPRange positions, QCPRange brightness)
{
    xAxis->setRange(withinBounds(positions, wholePositions_, kFewestMm));
    yAxis->setRange(withinBounds(brightness, wholeBrightness_, kFewestLevels));
    replot(rpQueuedReplot);
}

void TChart::paintEvent(QPaintEvent* event)
{
    Chart::paintEvent(event);
    QPainter painter(this);
    painter.setClipRect(axisRect()->rect());
    const auto curve = colours().of(chart::Role::First);
    if (dragging_ == Qt::LeftButton) {
        auto band = curve;
        band.setAlpha(kBandAlpha);
        painter.setPen(curve);
        painter.setBrush(band);
        painter.drawRect(spanning(pressedAt_, mouseAt_));
    } else if (pointed_ >= 0 && graphCount() > 0 && pointed_ < graph(0)->dataCount()) {
        const auto datum = graph(0)->data()->at(pointed_);
        const QPointF spot(xAxis->coordToPixel(datum->key), yAxis->coordToPixel(datum->value));
        painter.setPen(QPen(colours().ink, 1, Qt::DotLine));
        painter.drawLine(QPointF(spot.x(), axisRect()->top()), QPointF(spot.x(), axisRect()->bottom()));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(curve);
        painter.setBrush(colours().paper);
        painter.drawEllipse(spot, 3.5, 3.5);
    }
}

void TChart::mousePressEvent(QMouseEvent* event)
{
    if (dragging_ != Qt::NoButton) return;
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton) return;
    dragging_ = event->button();
    pressedAt_ = mouseAt_ = event->pos();
    pressedPositions_ = xAxis->range();
    pressedBrightness_ = yAxis->range();
    setCursor(dragging_ == Qt::RightButton ? Qt::ClosedHandCursor : Qt::CrossCursor);
    event->accept();
}

void TChart::mouseMoveEvent(QMouseEvent* event)
{
    mouseAt_ = event->pos();
    if (dragging_ == Qt::RightButton) moveBy(mouseAt_ - pressedAt_);
    point(mouseAt_);
    update();
}

void TChart::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != dragging_) return;
    const auto button = std::exchange(dragging_, Qt::NoButton);
    setCursor(Qt::CrossCursor);
    if (button == Qt::LeftButton) {
        const auto gesture = gestureOf(event->pos() - pressedAt_);
        if (gesture == Gesture::Extend) extendTo(spanning(pressedAt_, event->pos()));
        if (gesture == Gesture::Whole) showWhole();
    }
    update();
}

// The second press of a quick pair of drags arrives as a double click.
void TChart::mouseDoubleClickEvent(QMouseEvent* event) { mousePressEvent(event); }

void TChart::extendTo(const QRect& area)
{
    const auto seen = area.intersected(axisRect()->rect());
    if (seen.isEmpty()) return;
    auto positions = xAxis->range();
    auto brightness = yAxis->range();
    if (area.width() > kLevelPixels)
        positions = {xAxis->pixelToCoord(seen.left()), xAxis->pixelToCoord(seen.right())};
    if (area.height() > kLevelPixels)
        brightness = {yAxis->pixelToCoord(seen.bottom()), yAxis->pixelToCoord(seen.top())};
    showPart(positions, brightness);
}

void TChart::moveBy(const QPoint& pixels)
{
    const double across = pressedPositions_.size() * pixels.x() / std::max(axisRect()->width(), 1);
    const double up = pressedBrightness_.size() * pixels.y() / std::max(axisRect()->height(), 1);
    showPart({pressedPositions_.lower - across, pressedPositions_.upper - across},
             {pressedBrightness_.lower + up, pressedBrightness_.upper + up});
}

void TChart::moveByPart(double ofWidth, double ofHeight)
{
    const auto positions = xAxis->range();
    const auto brightness = yAxis->range();
    const double across = positions.size() * ofWidth;
    const double up = brightness.size() * ofHeight;
    showPart({positions.lower + across, positions.upper + across},
             {brightness.lower + up, brightness.upper + up});
}

void TChart::zoomPositions(double factor, double around)
{
    showPart(zoomed(xAxis->range(), factor, around, wholePositions_, kFewestMm), yAxis->range());
}

void TChart::zoomBrightness(double factor, double around)
{
    showPart(xAxis->range(), zoomed(yAxis->range(), factor, around, wholeBrightness_, kFewestLevels));
}

void TChart::wheelEvent(QWheelEvent* event)
{
    const auto turn = event->angleDelta();
    const double notches = (turn.y() != 0 ? turn.y() : turn.x()) / kWheelNotch;
    const double factor = std::pow(kZoomStep, -notches);
    const auto at = event->position();
    if (event->modifiers().testFlag(Qt::ShiftModifier)) {
        zoomBrightness(factor, yAxis->pixelToCoord(at.y()));
    } else {
        zoomPositions(factor, xAxis->pixelToCoord(at.x()));
    }
    event->accept();
}

void TChart::leaveEvent(QEvent* event)
{
    Chart::leaveEvent(event);
    pointed_ = -1;
    Q_EMIT pointedAt(QString());
    update();
}

void TChart::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Plus:
        return zoomPositions(1 / kZoomStep, keyboardCentre());
    case Qt::Key_Minus:
        return zoomPositions(kZoomStep, keyboardCentre());
    case Qt::Key_Left:
        return moveByPart(-kMoveStep, 0);
    case Qt::Key_Right:
        return moveByPart(kMoveStep, 0);
    case Qt::Key_Up:
        return moveByPart(0, kMoveStep);
    case Qt::Key_Down:
        return moveByPart(0, -kMoveStep);
    case Qt::Key_Home:
        return showWhole();
    default:
        Chart::keyPressEvent(event);
    }
}

/// What the keys zoom around: the pixel that the mouse points at, else the middle.
double TChart::keyboardCentre() const
{
    return pointed_ >= 0 ? (graph(0)->data()->constBegin() + pointed_)->key : xAxis->range().center();
}

// The pixel whose position is nearest to the mouse.
void TChart::point(const QPoint& at)
{
    pointed_ = -1;
    if (graphCount() > 0 && graph(0)->dataCount() > 0 && axisRect()->rect().contains(at)) {
        const auto series = graph(0)->data();
        const double position = xAxis->pixelToCoord(at.x());
        const auto begin = series->constBegin();
        auto found = series->findEnd(position, false);
        if (found == series->constEnd()) --found;
        if (found != begin && position - std::prev(found)->key < found->key - position) --found;
        pointed_ = static_cast<int>(found - begin);
        Q_EMIT pointedAt(readoutText(pointed_ + 1, found->key, found->value));
    } else {
        Q_EMIT pointedAt(QString());
    }
}

} // namespace quorvel::grayscale
