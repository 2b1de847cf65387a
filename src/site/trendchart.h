#pragma once

#include "chart/chart.h"
#include "site/trend.h"

#include <QVector>

#include <array>
#include <optional>

namespace quorvel::site {

/// A readout whose trend is drawn.
struct TrendCurve {
    int address = 0;
    QString name; ///< for the legend
};

/// X and Y over time, and X against Y, of the chosen readouts. What is drawn is bounded by the pixels, however many
/// readings there are.
///
/// Two marks, A and B, lie on the readings of one of the curves: a click sets A, a click with Shift B, arrows move A, with
/// Shift B, with Control by ten; up and down choose the curve. The wheel, plus and minus zoom the time, dragging and
/// Page Up and Down move it, Home shows the whole.
class TrendChart final : public chart::Chart {
    Q_OBJECT
public:
    enum Mark { A, B };
    static constexpr int kMarks = 2;
    static constexpr int kMostInLegend = 16;

    /// @param trend  must outlive the chart.
    explicit TrendChart(const Trend& trend, QWidget* parent = nullptr);

    void setCurves(const std::vector<TrendCurve>& curves);
    const std::vector<TrendCurve>& curves() const { return curves_; }
    /// Draws differences from the first value in sight instead of values.
    void setRelative(bool relative);
    /// The readings of the trend are others. What shows the newest goes on to do so.
    void refresh();

    /// The stretch of time in sight.
    Span span() const;
    /// Shows this many seconds up to the newest reading; 0: all.
    void showLatest(double seconds);
    /// Moved and narrowed so that readings stay in sight; what is shorter than 10 s is not shown.
    void showSpan(const Span& asked);

    /// The curve that the marks are on; -1 when there is none.
    int current() const { return curves_.empty() ? -1 : current_; }
    void setCurrent(int curve);
    const TrendPoint* mark(Mark mark) const;
    /// Sets a mark on the reading next to a moment.
    void setMark(Mark mark, double time);

Q_SIGNALS:
    /// Curves, span or marks are others.
    void changed();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dressed(const chart::Colours& colours) override;

private:
    /// What is drawn of one readout.
    struct Drawn {
        std::array<QCPGraph*, 2> overTime{}; ///< X, Y
        std::array<QCPGraph*, 2> alone{};    ///< readings of these between two gaps
        QCPCurve* path = nullptr;
    };
    /// The lines of a mark over time, and its place on the path.
    struct Shown {
        std::array<QCPItemStraightLine*, 2> lines{};
        QCPItemText* letter = nullptr;
        QCPGraph* place = nullptr;
    };

    void setUpTime(QCPAxisRect& rect, const QString& label);
    void setUpMarks();
    void style(Drawn& drawn, int curve);
    void fill();
    void fillPath(QCPCurve& path, const TrendPoints& points, const std::array<double, 2>& base);
    void scaleValues();
    void showMarks();
    static QSharedPointer<QCPAxisTickerDateTime> wholeSeconds();
    void formatTime();
    std::array<double, 2> baseOf(const TrendPoints& points) const;
    std::optional<Span> whole() const;
    static Span held(const Span& asked, const Span& all);
    const TrendPoints* currentPoints() const;
    void moveMark(Mark mark, int steps);
    void zoom(double factor, double around);
    void draw();

    const Trend& trend_;
    std::vector<TrendCurve> curves_;
    std::vector<Drawn> drawn_;
    std::array<QCPAxisRect*, 2> times_{}; ///< X above Y
    QCPAxisRect* place_ = nullptr;
    QSharedPointer<QCPAxisTickerDateTime> ticker_;
    std::array<Shown, kMarks> shown_;
    std::array<std::optional<double>, kMarks> marks_;
    QCPTextElement* more_ = nullptr;
    int current_ = 0;
    bool relative_ = false;
    double latest_ = 0;   ///< seconds in sight up to the newest; 0: all
    bool follows_ = true; ///< the newest stays in sight
    std::optional<QPoint> pressed_;
};

} // namespace quorvel::site
