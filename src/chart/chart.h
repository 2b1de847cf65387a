#pragma once

#include "chart/colours.h"
#include "chart/plot.h"

#include <optional>

/// How our charts look, and how they leave the window: as pictures, files and prints.
namespace quorvel::chart {

/// A plot in the colours and the font size of the desktop. It follows both when they change.
///
/// Whoever adds axes, legends, texts or curves says what a curve is for by give() and calls dress() when all is there.
class Chart : public QCustomPlot {
    Q_OBJECT
public:
    explicit Chart(QWidget* parent = nullptr);

    /// Draws a curve or a text in the colour of its role, from now on.
    void give(QCPAbstractPlottable* curve, Role role);
    void give(QCPItemText* text, Role role);
    /// Gives everything that is there its colour and its font. Does not draw.
    void dress();

    /// The colours that the chart has now.
    Colours colours() const;

    /// While one of these lives, the chart has the colours of paper. It is not drawn on the screen meanwhile.
    class OnPaper {
    public:
        explicit OnPaper(Chart& chart);
        ~OnPaper();
        OnPaper(const OnPaper&) = delete;
        OnPaper& operator=(const OnPaper&) = delete;

    private:
        Chart& chart_;
    };

protected:
    void changeEvent(QEvent* event) override;
    /// Called when the colours are others, for what a chart paints by itself.
    virtual void dressed(const Colours& /*colours*/) {}

private:
    void dressAxes(QCPAxisRect& rect, const Colours& colours) const;
    void dressLegend(QCPLegend& list, const Colours& colours) const;

    bool onPaper_ = false;
};

} // namespace quorvel::chart
