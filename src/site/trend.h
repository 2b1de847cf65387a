#pragma once

#include "site/sweep.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

/// Days of readings, and what they come to.
namespace quorvel::site {

/// A reading in a trend.
struct TrendPoint {
    double time = 0;                       ///< s since 1970
    std::array<double, kSensorCount> mm{}; ///< NaN where the readout gave no value
    std::uint8_t decimals = 0;             ///< received behind the point

    double of(protocol::Sensor sensor) const { return mm.at(placeOf(sensor)); }
};
using TrendPoints = std::vector<TrendPoint>; ///< of one readout, ascending in time

/// A stretch of time, both ends included.
struct Span {
    double from = 0; ///< s since 1970
    double to = 0;
    bool operator==(const Span&) const = default;
};

/// Keeps the readings of a site, in bounded memory: when a readout has its share, its oldest eighth goes.
class Trend {
public:
    static constexpr std::size_t kMostPoints = 2'000'000; ///< of all readouts
    static constexpr std::size_t kMostOfOne = 100'000;    ///< of each, where there are few

    /// Adds a reading; a failed one as a point without values, so that a gap is seen. One that is not later than the
    /// latest, as after the machine's clock was set back, is left out.
    void take(const Reading& reading);
    void forget() { readouts_.clear(); }
    /// Empty for a readout that was never asked.
    const TrendPoints& of(int address) const;

private:
    std::map<int, TrendPoints> readouts_;
};

/// The points of a span.
std::pair<TrendPoints::const_iterator, TrendPoints::const_iterator> within(const TrendPoints& points,
                                                                           const Span& span);

/// What the values of a sensor come to.
struct TrendFigures {
    std::int64_t count = 0;
    double mean = 0;
    double swing = 0;                   ///< from the lowest to the highest
    std::optional<double> driftPerHour; ///< slope of the straight line that fits best; needs two times
};
TrendFigures figuresOf(const TrendPoints& points, protocol::Sensor sensor, const Span& span);

/// The curve of a sensor over a span, with at most two points for each of `buckets` equal parts: the lowest and the
/// highest in the order in which they came, so that no peak is lost. Where there are no more points than that, all of
/// them, gaps as NaN. The points next to the span are added, for lines that leave it.
/// @param buckets  1 or more.
std::vector<std::pair<double, double>> thinned(const TrendPoints& points, protocol::Sensor sensor,
                                               const Span& span, int buckets);

/// The path of X against Y over a span, in the order of time: at most four points for each part, its extremes.
std::vector<std::pair<double, double>> pathOf(const TrendPoints& points, const Span& span, int buckets);

/// The point next to a moment that has a value of X or Y; null when there is none.
const TrendPoint* nearest(const TrendPoints& points, double time);

/// The place of a point with values `steps` further on, or back; the first or last one when there are fewer.
const TrendPoint* stepped(const TrendPoints& points, double time, int steps);

} // namespace quorvel::site
