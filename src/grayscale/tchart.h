#pragma once

#include "chart/zoomchart.h"
#include "grayscale/labelticker.h"

namespace quorvel::grayscale {

/// The chart: line series over millimetres and brightness, with labels of its own on both axes. A label that is a word
/// names its axis; while it is out of sight, the name stands beside the axis.
///
/// It is looked into as every ZoomChart. Its cursor stands on a pixel of series 0: the mouse shows the one that stands out
/// most among those under it, Ctrl and the arrows to the left and right step from pixel to pixel. A click or the space bar
/// leaves a second cursor behind, from which differences count; on the same pixel it takes it away. Its accessible name is
/// its title.
class TChart : public chart::ZoomChart {
    Q_OBJECT
public:
    explicit TChart(QWidget* parent = nullptr);

    void setTitle(const QString& title);
    QString title() const { return title_->text(); }

    void removeAllSeries();
    /// Adds a line through the points; series 0 is the one that the cursors read.
    /// @param positions  mm, ascending, as many as `values`. A value that is not a number is a gap.
    /// @param legend     its text in the legend; empty: it has none.
    void addSeries(const QVector<double>& positions, const QVector<double>& values, chart::Role role,
                   const QString& legend);

    void setPositionLabels(std::vector<AxisLabel> labels);
    void setBrightnessLabels(std::vector<AxisLabel> labels);
    const std::vector<AxisLabel>& positionLabels() const { return positionTicker_->labels(); }
    const std::vector<AxisLabel>& brightnessLabels() const { return brightnessTicker_->labels(); }

    /// Puts the cursor on a pixel, from 1, and moves it into sight; nothing when there is no such pixel.
    void pointTo(int pixel);

Q_SIGNALS:
    /// What the cursor stands on, such as "Pixel 1824: 24.640 mm, 187"; empty when it is nothing.
    void pointedAt(const QString& text);

protected:
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    double keyboardCentre() const override;
    void pointedTo(const QPoint& at) override;
    void clickedAt(const QPoint& at) override;
    void paintMarks(QPainter& painter) override;
    void partShown() override;
    /// What else is known about a pixel, from 1, to be said behind its brightness.
    virtual QString moreAbout(int /*pixel*/) const { return {}; }

private:
    /// Neighbouring pixels, by their indices in series 0; `out` is the one that stands out.
    struct Column {
        int first = -1;
        int last = -1;
        int out = -1;
    };
    void setUpAxes();
    void setUpLegend();
    int pixelCount() const { return graphCount() > 0 ? graph(0)->dataCount() : 0; }
    QCPGraphData pixelAt(int index) const { return *graph(0)->data()->at(index); }
    int nearestTo(double position) const;
    Column columnAt(int x) const;
    void setCursorTo(const Column& column);
    void step(int pixels);
    void keepSecond();
    QString cursorText() const;
    void paintCursor(QPainter& painter, int index, Qt::PenStyle style) const;

    QCPTextElement* title_;
    QSharedPointer<LabelTicker> positionTicker_;
    QSharedPointer<LabelTicker> brightnessTicker_;
    Column pointed_;
    int second_ = -1; ///< index into series 0
};

} // namespace quorvel::grayscale
