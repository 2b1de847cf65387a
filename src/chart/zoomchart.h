#pragma once

#include "chart/chart.h"

#include <QPoint>

#include <vector>

class QPainter;

namespace quorvel::chart {

/// What a finished drag with the left button asks for.
enum class Gesture { Nothing, Extend, Whole };
/// Dragging right and down zooms into the area; left and up shows the whole. A level or upright drag counts by the one
/// direction that it has; a click and a drag to one of the two other corners do nothing.
/// @param drag  from the press to the release, in pixels.
Gesture gestureOf(const QPoint& drag);

/// A chart of one pair of axes that is looked into.
///
/// The left button zooms in and returns to the whole, the right button moves, the wheel zooms along the lower axis (with
/// Shift, along the left one). Keys: + and - zoom, with Ctrl along the left axis; arrows move, Home shows the whole,
/// Backspace what was shown before; L hides and shows the legend, which can be dragged to another place.
class ZoomChart : public Chart {
    Q_OBJECT
public:
    explicit ZoomChart(QWidget* parent = nullptr);

    /// Sets what the whole is, and shows it. What was shown before is forgotten.
    void setWhole(const QCPRange& across, const QCPRange& upward);
    /// How little is shown at the least, in the units of the axes.
    void setFewest(double across, double upward);
    void showWhole();
    /// True when nothing is zoomed or moved.
    bool isWhole() const;
    /// Shows this part; kept within bounds in which something can be seen.
    void showPart(QCPRange across, QCPRange upward);
    /// Shows what was shown before the last change. @return false when there was nothing before.
    bool stepBack();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

    /// What the keys zoom around, on the lower axis.
    virtual double keyboardCentre() const { return xAxis->range().center(); }
    /// The mouse is there, or was clicked there.
    virtual void pointedTo(const QPoint& /*at*/) {}
    virtual void clickedAt(const QPoint& /*at*/) {}
    /// Painted over the curves, within the axes, on the screen alone.
    virtual void paintMarks(QPainter& /*painter*/) {}
    /// Another part is about to be drawn.
    virtual void partShown() {}

private:
    struct Part {
        QCPRange across{0, 1};
        QCPRange upward{0, 1};
    };
    Part part() const { return {xAxis->range(), yAxis->range()}; }
    void remember();
    void extendTo(const QRect& area);
    void moveBy(const QPoint& pixels);
    void moveByPart(double ofWidth, double ofHeight);
    void zoomAcross(double factor, double around);
    void zoomUpward(double factor, double around);
    bool isOnLegend(const QPoint& at) const;
    void moveLegend(const QPoint& by);

    Part whole_;
    double fewestAcross_ = 1e-9;
    double fewestUpward_ = 1e-9;
    std::vector<Part> before_; ///< what was shown, the latest last
    Qt::MouseButton dragging_ = Qt::NoButton;
    bool draggingLegend_ = false;
    QPoint pressedAt_;
    QPoint mouseAt_;
    Part pressedPart_;
    QRectF pressedLegend_;
};

} // namespace quorvel::chart
