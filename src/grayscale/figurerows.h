#pragma once

#include "grayscale/profilefigures.h"

#include <QString>

#include <vector>

namespace quorvel::grayscale {

/// A line of the table of figures.
struct FigureRow {
    QString name;
    QString now;
    QString then;          ///< of the reference; empty without one
    double placeMm = 0;    ///< where it is in the reading
    bool hasPlace = false; ///< it is at one place
};

/// The figures for people. Dips of both are in one line when they are less than 0.3 mm apart.
/// @param then  of the reference; null: there is none.
std::vector<FigureRow> figureRows(const ProfileFigures& now, const ProfileFigures* then,
                                  link::InstrumentType type);

} // namespace quorvel::grayscale
