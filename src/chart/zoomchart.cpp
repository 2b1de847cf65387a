#include "chart/zoomchart.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvel::chart {

namespace {

constexpr int kLevelPixels = 6; // a hand does not draw a level line
constexpr double kZoomStep = 1.25;
constexpr double kWheelNotch = 120; // in the unit of wheel events
constexpr double kMoveStep = 0.1;   // of what is seen
constexpr int kBandAlpha = 40;
constexpr std::size_t kMostSteps = 100;

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

/// But for rounding.
bool same(const QCPRange& one, const QCPRange& other)
{
    const double little = 1e-9 * one.size();
    return std::fabs(one.lower - other.lower) < little && std::fabs(one.upper - other.upper) < little;
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

ZoomChart::ZoomChart(QWidget* parent) : Chart(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
}

void ZoomChart::setWhole(const QCPRange& across, const QCPRange& upward)
{
    whole_ = {across, upward};
    showWhole();
    before_.clear();
}

void ZoomChart::setFewest(double across, double upward)
{
    fewestAcross_ = across;
    fewestUpward_ = upward;
}

void ZoomChart::showWhole() { showPart(whole_.across, whole_.upward); }

bool ZoomChart::isWhole() const
{
    return same(xAxis->range(), whole_.across) && same(yAxis->range(), whole_.upward);
}

void ZoomChart::showPart(QCPRange across, QCPRange upward)
{
    xAxis->setRange(withinBounds(across, whole_.across, fewestAcross_));
    yAxis->setRange(withinBounds(upward, whole_.upward, fewestUpward_));
    partShown();
    replot(rpQueuedReplot);
}

void ZoomChart::remember()
{
    before_.push_back(part());
    if (before_.size() > kMostSteps) before_.erase(before_.begin());
}

bool ZoomChart::stepBack()
{
    const auto now = part();
    while (!before_.empty()) {
        const auto step = before_.back();
        before_.pop_back();
        if (same(step.across, now.across) && same(step.upward, now.upward)) continue;
        showPart(step.across, step.upward);
        return true;
    }
    return false;
}

void ZoomChart::paintEvent(QPaintEvent* event)
{
    Chart::paintEvent(event);
    QPainter painter(this);
    painter.setClipRect(axisRect()->rect());
    if (dragging_ == Qt::LeftButton && !draggingLegend_) {
        const auto curve = colours().of(Role::First);
        auto band = curve;
        band.setAlpha(kBandAlpha);
        painter.setPen(curve);
        painter.setBrush(band);
        painter.drawRect(spanning(pressedAt_, mouseAt_));
    } else {
        paintMarks(painter);
    }
}

void ZoomChart::mousePressEvent(QMouseEvent* event)
{
    if (dragging_ != Qt::NoButton) return;
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton) return;
    dragging_ = event->button();
    pressedAt_ = mouseAt_ = event->pos();
    pressedPart_ = part();
    draggingLegend_ = dragging_ == Qt::LeftButton && isOnLegend(pressedAt_);
    pressedLegend_ = legend->outerRect();
    setCursor(dragging_ == Qt::RightButton || draggingLegend_ ? Qt::ClosedHandCursor : Qt::CrossCursor);
    event->accept();
}

void ZoomChart::mouseMoveEvent(QMouseEvent* event)
{
    mouseAt_ = event->pos();
    if (dragging_ == Qt::RightButton) moveBy(mouseAt_ - pressedAt_);
    if (draggingLegend_) return moveLegend(mouseAt_ - pressedAt_);
    pointedTo(mouseAt_);
    update();
}

void ZoomChart::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != dragging_) return;
    const auto button = std::exchange(dragging_, Qt::NoButton);
    const bool legendMoved = std::exchange(draggingLegend_, false);
    setCursor(Qt::CrossCursor);
    const auto drag = event->pos() - pressedAt_;
    if (button == Qt::LeftButton && !legendMoved) {
        const auto gesture = gestureOf(drag);
        if (gesture != Gesture::Nothing) remember();
        if (gesture == Gesture::Extend) extendTo(spanning(pressedAt_, event->pos()));
        if (gesture == Gesture::Whole) showWhole();
        if (drag.manhattanLength() < kLevelPixels) clickedAt(event->pos());
    } else if (button == Qt::RightButton && !drag.isNull()) {
        before_.push_back(pressedPart_);
    }
    update();
}

// The second press of a quick pair of drags arrives as a double click.
void ZoomChart::mouseDoubleClickEvent(QMouseEvent* event) { mousePressEvent(event); }

void ZoomChart::extendTo(const QRect& area)
{
    const auto seen = area.intersected(axisRect()->rect());
    if (seen.isEmpty()) return;
    auto next = part();
    if (area.width() > kLevelPixels)
        next.across = {xAxis->pixelToCoord(seen.left()), xAxis->pixelToCoord(seen.right())};
    if (area.height() > kLevelPixels)
        next.upward = {yAxis->pixelToCoord(seen.bottom()), yAxis->pixelToCoord(seen.top())};
    showPart(next.across, next.upward);
}

void ZoomChart::moveBy(const QPoint& pixels)
{
    const double across = pressedPart_.across.size() * pixels.x() / std::max(axisRect()->width(), 1);
    const double up = pressedPart_.upward.size() * pixels.y() / std::max(axisRect()->height(), 1);
    showPart({pressedPart_.across.lower - across, pressedPart_.across.upper - across},
             {pressedPart_.upward.lower + up, pressedPart_.upward.upper + up});
}

void ZoomChart::moveByPart(double ofWidth, double ofHeight)
{
    remember();
    const auto now = part();
    const double across = now.across.size() * ofWidth;
    const double up = now.upward.size() * ofHeight;
    showPart({now.across.lower + across, now.across.upper + across},
             {now.upward.lower + up, now.upward.upper + up});
}

void ZoomChart::zoomAcross(double factor, double around)
{
    remember();
    showPart(zoomed(xAxis->range(), factor, around, whole_.across, fewestAcross_), yAxis->range());
}

void ZoomChart::zoomUpward(double factor, double around)
{
    remember();
    showPart(xAxis->range(), zoomed(yAxis->range(), factor, around, whole_.upward, fewestUpward_));
}

void ZoomChart::wheelEvent(QWheelEvent* event)
{
    const auto turn = event->angleDelta();
    const double notches = (turn.y() != 0 ? turn.y() : turn.x()) / kWheelNotch;
    const double factor = std::pow(kZoomStep, -notches);
    const auto at = event->position();
    if (event->modifiers().testFlag(Qt::ShiftModifier)) {
        zoomUpward(factor, yAxis->pixelToCoord(at.y()));
    } else {
        zoomAcross(factor, xAxis->pixelToCoord(at.x()));
    }
    event->accept();
}

void ZoomChart::keyPressEvent(QKeyEvent* event)
{
    const bool upward = event->modifiers().testFlag(Qt::ControlModifier);
    const auto zoom = [this, upward](double factor) {
        upward ? zoomUpward(factor, yAxis->range().center()) : zoomAcross(factor, keyboardCentre());
    };
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the same key, without Shift
        return zoom(1 / kZoomStep);
    case Qt::Key_Minus:
        return zoom(kZoomStep);
    case Qt::Key_Left:
        return moveByPart(-kMoveStep, 0);
    case Qt::Key_Right:
        return moveByPart(kMoveStep, 0);
    case Qt::Key_Up:
        return moveByPart(0, kMoveStep);
    case Qt::Key_Down:
        return moveByPart(0, -kMoveStep);
    case Qt::Key_Home:
        remember();
        return showWhole();
    case Qt::Key_Backspace:
        stepBack();
        return;
    case Qt::Key_L:
        legend->setVisible(!legend->visible());
        return replot(rpQueuedReplot);
    default:
        Chart::keyPressEvent(event);
    }
}

bool ZoomChart::isOnLegend(const QPoint& at) const
{
    return legend->visible() && legend->itemCount() > 0 && legend->outerRect().contains(at);
}

void ZoomChart::moveLegend(const QPoint& by)
{
    auto* inset = axisRect()->insetLayout();
    const QRectF axes = inset->rect();
    for (int i = 0; i < inset->elementCount(); ++i) {
        if (inset->elementAt(i) != legend) continue;
        QRectF place = pressedLegend_.translated(by);
        place.moveLeft(
            std::clamp(place.left(), axes.left(), std::max(axes.left(), axes.right() - place.width())));
        place.moveTop(
            std::clamp(place.top(), axes.top(), std::max(axes.top(), axes.bottom() - place.height())));
        inset->setInsetPlacement(i, QCPLayoutInset::ipFree);
        inset->setInsetRect(i, {(place.left() - axes.left()) / axes.width(),
                                (place.top() - axes.top()) / axes.height(), place.width() / axes.width(),
                                place.height() / axes.height()});
    }
    replot(rpQueuedReplot);
}

} // namespace quorvel::chart
