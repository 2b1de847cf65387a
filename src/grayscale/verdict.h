#pragma once

#include "grayscale/profilefigures.h"

#include <QJsonObject>
#include <QStringList>

namespace quorvel::grayscale {

inline constexpr double kWeakLamp = 80;       ///< brightness; a lamp below is weak
inline constexpr double kUneven = 0.5;        ///< darkest by brightest part of the lamp; below, it is uneven
inline constexpr double kWorthCleaning = 0.1; ///< depth of a dip from which on it is named
inline constexpr double kBlurredMm = 0.3;     ///< width of the shadow's edge from which on it is blurred
inline constexpr int kNamedDips = 3;          ///< the deepest; of the others the number

/// What the figures mean, in sentences, what matters most first: "Dust at 37.3 mm, 27 % deep." When nothing is wrong, one
/// that says so.
QStringList verdict(const ProfileFigures& figures);

/// "37.3 mm": a place as sentences name it.
QString inMm(double mm);
/// "27 %".
QString inPercent(double part);

/// The figures with their units in the names, as docs/grayscale.md lists them.
QJsonObject toJson(const ProfileFigures& figures);

} // namespace quorvel::grayscale
