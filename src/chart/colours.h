#pragma once

#include <QColor>
#include <QPalette>

namespace quorvel::chart {

/// What something in a chart is drawn for; its colour follows from that and from the palette.
enum class Role {
    First,  ///< curves, in the order in which they are added
    Second, //
    Third,  //
    Behind, ///< what is shown for comparison, behind a curve
    Mark,   ///< what the eye should find
    End,    ///< an end of the scale: red on any paper
};

/// The colours of a chart.
struct Colours {
    QColor paper;
    QColor ink;        ///< axes and texts
    QColor grid;       ///< lines behind the curves
    QColor veil;       ///< behind the legend: paper that lets the curves through a little
    bool dark = false; ///< the paper is

    QColor of(Role role) const;
};

/// Those that suit a window of this palette.
Colours coloursOf(const QPalette& palette);

/// Those of pictures, files and prints: dark on white, whatever the desktop looks like.
Colours coloursOnPaper();

} // namespace quorvel::chart
