#pragma once

#include "protocol/calibration_table.h"

#include <array>
#include <optional>
#include <string>

/// The straight line through the points of a calibration table: reading = slope x dial + intercept.
namespace quorvel::calibration {

using protocol::kPoints;
using protocol::Point;
using protocol::Points;

struct Fit {
    float slope = 0;
    float intercept = 0;                     ///< mm
    double nonlinearError = 0;               ///< mm, standard deviation of the residuals over 10
    float maxError = 0;                      ///< mm, largest residual without its sign
    std::array<double, kPoints> residuals{}; ///< mm, reading minus line
    int worst = 0;                           ///< index of the point with the largest residual
};

inline constexpr auto kNoLine = "No line can be fitted: the dial readings (Rule_Data) of all points are "
                                "equal, or too large to calculate with.";

/// Least squares. Sums and results are held in single precision, each rounded after every addition; between
/// two roundings the calculation is in double precision.
///
/// @return nothing when no line can be fitted: all dial readings equal, or sums beyond single precision.
std::optional<Fit> fitLine(const Points& points);

/// The same line in double precision throughout.
struct ExactFit {
    double slope = 0;
    double intercept = 0;      ///< mm
    double nonlinearError = 0; ///< mm
    double maxError = 0;       ///< mm
};

/// @return nothing when all dial readings are equal.
std::optional<ExactFit> fitExactly(const Points& points);

/// "Y=" slope "*X+(" intercept ")", as in fitText().
std::string lineText(const Fit& fit);
std::string lineText(const ExactFit& fit);

/// True when single precision lost so much that it shows: the line or an error is off by more than half a micrometre.
bool losesDigits(const Fit& fit, const ExactFit& exact, const Points& points);

/// The two lines of the result as the window shows them, parted by CR LF. They begin with "X: " in every direction.
std::string fitText(const Fit& fit);

} // namespace quorvel::calibration
