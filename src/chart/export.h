#pragma once

#include "chart/chart.h"

#include <QDateTime>
#include <QImage>

class QPrinter;

namespace quorvel::chart {

/// What a chart shows, in words that go with it when it leaves the window.
struct About {
    QString title;
    QString description; ///< "Readout 5, type A, X direction"
    QDateTime at;        ///< when what it shows was measured; invalid: not known
    bool asLine = false; ///< also as a small line below the chart
};

/// Name and version of the program that made it.
QString programName();
/// All of it in one line: "Readout 5, type A, X direction · 2026-05-17 09:05:30 · QUORVEL V4.11".
QString lineOf(const About& about);

/// A picture has at least so many pixels from left to right.
inline constexpr int kPictureWidth = 1600;

/// The chart as it is shown, in the colours of paper.
QImage picture(Chart& chart, const About& about = {});
/// The chart in this size, which it then keeps.
QImage picture(Chart& chart, const QSize& size);

/// The forms that save() knows, by the end of a name, without its dot: "png", "jpg", "pdf" and, where Qt's library for it was
/// there when the program was built, "svg".
QStringList forms();

/// Writes the chart as it is shown, in the colours of paper, under exactly this name. The file carries title,
/// description, time and program where its form has a place for them: texts in PNG and JPEG, <title> and <desc> in SVG,
/// the document's properties in PDF. An existing file is replaced when the new one is whole.
/// @param form  one of forms(), or "jpeg".
/// @return empty on success, otherwise the reason in words.
QString save(Chart& chart, const QString& path, const QString& form, const About& about = {});

/// Prints the chart on one page, as wide or as high as fits.
/// @return empty on success, otherwise the reason in words.
QString print(Chart& chart, QPrinter& printer, const About& about = {});

} // namespace quorvel::chart
