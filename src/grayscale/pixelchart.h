#pragma once

#include "grayscale/pixelreading.h"
#include "grayscale/profilefigures.h"
#include "grayscale/tchart.h"

namespace quorvel::grayscale {

/// The chart of the window "Pixels": a reading, behind it a reference, their difference along an axis of its own at the
/// right, the spread of several readings as a band, and marks where the figures found something.
class PixelChart final : public TChart {
    Q_OBJECT
public:
    explicit PixelChart(QWidget* parent = nullptr);

    /// Draws this and nothing else. A part that is looked into stays, if direction and type are the same.
    /// @param reading    nothing is drawn of one without readings.
    /// @param reference  null: none.
    void draw(const PixelReading& reading, const PixelReading* reference, const ProfileFigures& figures);

    /// Where the difference is drawn.
    QCPAxis* differenceAxis() { return difference_; }

protected:
    QString moreAbout(int pixel) const override;

private:
    QVector<double> places(std::size_t count) const;
    void addBand();
    void addReference(const PixelReading& reference);
    void addDifference();
    void addMarks(const ProfileFigures& figures);
    void addMarksAt(const std::vector<int>& pixels, QCPScatterStyle::ScatterShape shape, const QString& name);
    void addEnds();

    QCPAxis* difference_;
    PixelReading reading_;
    std::vector<double> reference_; ///< as bright was the pixel; empty: not known
    std::vector<double> differences_;
};

/// The pixel nearest to a place, from 1 to `count`.
int pixelNearest(link::InstrumentType type, double mm, int count);

} // namespace quorvel::grayscale
