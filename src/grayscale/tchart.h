#pragma once

#include "chart/chart.h"
#include "grayscale/labelticker.h"

#include <QPoint>

namespace quorvel::grayscale {

/// What a finished drag with the left button asks for.
enum class Gesture { Nothing, Extend, Whole };
/// Dragging right and down zooms into the area; left and up shows the whole. A level or upright drag counts by the one
/// direction that it has; a click and a drag to one of the two other corners do nothing.
/// @param drag  from the press to the release, in pixels.
Gesture gestureOf(const QPoint& drag);

/// The chart: line series over millimetres and brightness, with labels of its own on both axes.
///
/// The left button zooms in and returns to the whole, the right button moves, the wheel zooms along the position axis
/// (with Shift, along the brightness axis); the keys + - Home and the arrows do the same. Its accessible name is its
/// title.
class TChart final : public chart::Chart {
    Q_OBJECT
public:
    explicit TChart(QWidget* parent = nullptr);

    void setTitle(const QString& title);
    QString title() const { return title_->text(); }

    void removeAllSeries();
    /// Adds a line through the points; series 0 is the one that the mouse reads.
    /// @param positions  mm, ascending, as many as `values`.
    /// @param legend     its text in the legend; empty: it has none.
    void addSeries(const QVector<double>& positions, const QVector<double>& values, chart::Role role,
                   const QString& legend);

    void setPositionLabels(std::vector<AxisLabel> labels);
    void setBrightnessLabels(std::vector<AxisLabel> labels);
    const std::vector<AxisLabel>& positionLabels() const { return positionTicker_->labels(); }
    const std::vector<AxisLabel>& brightnessLabels() const { return brightnessTicker_->labels(); }

    /// Sets what the whole is, and shows it.
    void setWhole(const QCPRange& positions, const QCPRange& brightness);
    void showWhole();
    /// Shows this part; kept within bounds in which something can be seen.
    void showPart(QCPRange positions, QCPRange brightness);

Q_SIGNALS:
    /// What the mouse points at, such as "Pixel 1824: 24.64 mm, 187"; empty when it is nothing.
    void pointedAt(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void setUpAxes();
    void setUpLegend();
    void extendTo(const QRect& area);
    void moveBy(const QPoint& pixels);
    void moveByPart(double ofWidth, double ofHeight);
    void zoomPositions(double factor, double around);
    void zoomBrightness(double factor, double around);
    double keyboardCentre() const;
    void point(const QPoint& at);

    QCPTextElement* title_;
    QSharedPointer<LabelTicker> positionTicker_;
    QSharedPointer<LabelTicker> brightnessTicker_;
    QCPRange wholePositions_{0, 1};
    QCPRange wholeBrightness_{0, 1};
    Qt::MouseButton dragging_ = Qt::NoButton;
    QPoint pressedAt_;
    QPoint mouseAt_;
    QCPRange pressedPositions_;
    QCPRange pressedBrightness_;
    int pointed_ = -1; ///< index into series 0
};

} // namespace quorvel::grayscale
