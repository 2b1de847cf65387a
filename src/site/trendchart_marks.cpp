// The marks of a trend, and how mouse and keyboard work it.

#include "site/trendchart.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvel::site {

namespace {

constexpr int kManySteps = 10;
constexpr int kStillPixels = 4; // a click may move so far
constexpr double kZoomFactor = 1.25;
constexpr double kNotch = 120; // of the wheel
constexpr double kPart = 0.5;  // of what is seen, by Page Up and Down

} // namespace

const TrendPoints* TrendChart::currentPoints() const
{
    if (curves_.empty()) return nullptr;
    return &trend_.of(curves_[static_cast<std::size_t>(current_)].address);
}

const TrendPoint* TrendChart::mark(Mark mark) const
{
    const auto& time = marks_.at(mark);
    const auto* points = currentPoints();
    return time && points ? nearest(*points, *time) : nullptr;
}

void TrendChart::setMark(Mark mark, double time)
{
    const auto* points = currentPoints();
    const auto* point = points ? nearest(*points, time) : nullptr;
    if (!point) return;
    marks_.at(mark) = point->time;
    showMarks();
    replot(rpQueuedReplot);
    Q_EMIT changed();
}

/// A mark that is not set begins at the newest reading in sight.
void TrendChart::moveMark(Mark mark, int steps)
{
    const auto* points = currentPoints();
    if (!points) return;
    const auto& set = marks_.at(mark);
    const auto* point = set ? stepped(*points, *set, steps) : nearest(*points, span().to);
    if (point) setMark(mark, point->time);
}

void TrendChart::setCurrent(int curve)
{
    if (curve < 0 || curve >= static_cast<int>(curves_.size())) return;
    current_ = curve;
    for (std::size_t i = 0; i < drawn_.size(); ++i)
        style(drawn_[i], static_cast<int>(i));
    draw();
}

void TrendChart::showMarks()
{
    const auto* points = currentPoints();
    const auto base = points ? baseOf(*points) : std::array<double, 2>{};
    for (int i = 0; i < kMarks; ++i) {
        auto& shown = shown_.at(static_cast<std::size_t>(i));
        const auto* point = mark(static_cast<Mark>(i));
        for (auto* line : shown.lines) {
            line->setVisible(point != nullptr);
            if (!point) continue;
            line->point1->setCoords(point->time, 0);
            line->point2->setCoords(point->time, 1);
        }
        shown.letter->setVisible(point != nullptr);
        shown.place->data()->clear();
        if (!point) continue;
        shown.letter->position->setCoords(point->time, 0);
        shown.place->addData(point->of(protocol::Sensor::X) - base[0],
                             point->of(protocol::Sensor::Y) - base[1]);
    }
}

void TrendChart::zoom(double factor, double around)
{
    const auto seen = span();
    showSpan({around + (seen.from - around) * factor, around + (seen.to - around) * factor});
}

void TrendChart::mousePressEvent(QMouseEvent* event)
{
    setFocus();
    pressed_ = event->pos();
    Chart::mousePressEvent(event);
}

void TrendChart::mouseReleaseEvent(QMouseEvent* event)
{
    Chart::mouseReleaseEvent(event);
    const auto pressed = std::exchange(pressed_, std::nullopt);
    if (!pressed || event->button() != Qt::LeftButton) return;
    const bool still = (event->pos() - *pressed).manhattanLength() <= kStillPixels;
    if (!still) return showSpan(span()); // it was dragged
    const bool overTime = std::any_of(times_.begin(), times_.end(), [event](QCPAxisRect* rect) {
        return rect->rect().contains(event->pos());
    });
    if (!overTime) return;
    const double time = times_[0]->axis(QCPAxis::atBottom)->pixelToCoord(event->pos().x());
    setMark(event->modifiers().testFlag(Qt::ShiftModifier) ? B : A, time);
}

void TrendChart::wheelEvent(QWheelEvent* event)
{
    const double around = times_[0]->axis(QCPAxis::atBottom)->pixelToCoord(event->position().x());
    zoom(std::pow(kZoomFactor, -event->angleDelta().y() / kNotch), around);
    event->accept();
}

void TrendChart::keyPressEvent(QKeyEvent* event)
{
    const auto mark = event->modifiers().testFlag(Qt::ShiftModifier) ? B : A;
    const int steps = event->modifiers().testFlag(Qt::ControlModifier) ? kManySteps : 1;
    const auto seen = span();
    const double part = (seen.to - seen.from) * kPart;
    switch (event->key()) {
    case Qt::Key_Left:
        return moveMark(mark, -steps);
    case Qt::Key_Right:
        return moveMark(mark, steps);
    case Qt::Key_Up:
        return setCurrent(current_ - 1);
    case Qt::Key_Down:
        return setCurrent(current_ + 1);
    case Qt::Key_Plus:
        return zoom(1 / kZoomFactor, (seen.from + seen.to) / 2);
    case Qt::Key_Minus:
        return zoom(kZoomFactor, (seen.from + seen.to) / 2);
    case Qt::Key_PageUp:
        return showSpan({seen.from - part, seen.to - part});
    case Qt::Key_PageDown:
        return showSpan({seen.from + part, seen.to + part});
    case Qt::Key_Home:
        return showLatest(0);
    default:
        Chart::keyPressEvent(event);
    }
}

} // namespace quorvel::site
