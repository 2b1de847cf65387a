#include "site/trend.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvel::site {

namespace {

using Sensor = protocol::Sensor;
using Pairs = std::vector<std::pair<double, double>>;
using Point = TrendPoints::const_iterator;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr double kMsPerSecondOfTrend = 1000;
constexpr double kSecondsPerHour = 3600;
constexpr std::size_t kFewReadouts = 20;
constexpr std::size_t kDroppedPart = 8;

bool hasPlace(const TrendPoint& point)
{
    return !std::isnan(point.of(Sensor::X)) || !std::isnan(point.of(Sensor::Y));
}

bool isEarlier(const TrendPoint& point, double time) { return point.time < time; }

std::uint8_t decimalsOf(const std::string& received)
{
    const auto point = received.find('.');
    return point == std::string::npos ? 0 : static_cast<std::uint8_t>(received.size() - point - 1);
}

/// Goes over the points in `buckets` equal parts of the span.
template<class Each>
void eachBucket(Point first, Point last, const Span& span, int buckets, const Each& each)
{
    for (int i = 1; first != last; ++i) {
        const double end = span.from + (span.to - span.from) * i / buckets;
        auto next = first;
        while (next != last && (next->time <= end || i >= buckets))
            ++next;
        if (next != first) each(first, next);
        first = next;
    }
}

/// Adds these points in the order of time, each once.
template<class Value>
void addInOrder(std::vector<Point>& chosen, Pairs& pairs, const Value& value)
{
    std::sort(chosen.begin(), chosen.end());
    chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
    for (const auto& point : chosen)
        pairs.push_back(value(*point));
}

/// Keeps in `least` the point with the smallest value, NaN apart.
template<class Value>
void keepLeast(Point& least, Point point, Point none, const Value& value)
{
    if (std::isnan(value(*point))) return;
    if (least == none || value(*point) < value(*least)) least = point;
}

} // namespace

void Trend::take(const Reading& reading)
{
    auto& points = readouts_[reading.address];
    TrendPoint point;
    point.time = static_cast<double>(reading.time.toMSecsSinceEpoch()) / kMsPerSecondOfTrend;
    if (!points.empty() && point.time <= points.back().time) return;
    for (const auto sensor : kSensors) {
        point.mm.at(placeOf(sensor)) = reading.mm(sensor).value_or(kNone);
        const auto& received = reading.received.at(placeOf(sensor));
        if (received) point.decimals = std::max(point.decimals, decimalsOf(*received));
    }
    const auto share = std::min(kMostOfOne, kMostPoints / std::max(kFewReadouts, readouts_.size()));
    if (points.size() >= share) {
        const auto dropped = points.size() - share + share / kDroppedPart;
        points.erase(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(dropped));
    }
    points.push_back(point);
}

const TrendPoints& Trend::of(int address) const
{
    static const TrendPoints kEmpty;
    const auto found = readouts_.find(address);
    return found == readouts_.end() ? kEmpty : found->second;
}

std::pair<Point, Point> within(const TrendPoints& points, const Span& span)
{
    const auto first = std::lower_bound(points.begin(), points.end(), span.from, isEarlier);
    const auto last = std::upper_bound(
        first, points.end(), span.to, [](double time, const TrendPoint& point) { return time < point.time; });
    return {first, last};
}

// The times are taken from the first one on: squares of seconds since 1970 have no digits left for a drift.
TrendFigures figuresOf(const TrendPoints& points, Sensor sensor, const Span& span)
{
    TrendFigures figures;
    const auto [first, last] = within(points, span);
    double lowest = 0;
    double highest = 0;
    double meanTime = 0;
    double squares = 0;
    double products = 0;
    for (auto point = first; point != last; ++point) {
        const double mm = point->of(sensor);
        if (std::isnan(mm)) continue;
        const double time = point->time - first->time;
        lowest = figures.count == 0 ? mm : std::min(lowest, mm);
        highest = figures.count == 0 ? mm : std::max(highest, mm);
        ++figures.count;
        const auto count = static_cast<double>(figures.count);
        const double timeOff = time - meanTime;
        meanTime += timeOff / count;
        const double mmOff = mm - figures.mean;
        figures.mean += mmOff / count;
        squares += timeOff * (time - meanTime);
        products += timeOff * (mm - figures.mean);
    }
    figures.swing = highest - lowest;
    if (squares > 0) figures.driftPerHour = products / squares * kSecondsPerHour;
    return figures;
}

Pairs thinned(const TrendPoints& points, Sensor sensor, const Span& span, int buckets)
{
    auto [first, last] = within(points, span);
    const auto value = [sensor](const TrendPoint& point) { return point.of(sensor); };
    const auto pair = [sensor](const TrendPoint& point) { return std::pair(point.time, point.of(sensor)); };
    Pairs pairs;
    if (first != points.begin()) pairs.push_back(pair(*(first - 1)));
    if (last - first <= 2 * std::ptrdiff_t{buckets}) {
        std::transform(first, last, std::back_inserter(pairs), pair);
    } else {
        eachBucket(first, last, span, buckets, [&](Point begin, Point end) {
            auto lowest = end;
            auto highest = end;
            for (auto point = begin; point != end; ++point) {
                keepLeast(lowest, point, end, value);
                keepLeast(highest, point, end, [&value](const TrendPoint& p) { return -value(p); });
            }
            if (lowest == end) return pairs.push_back(pair(*begin)); // a gap
            std::vector<Point> chosen{lowest, highest};
            addInOrder(chosen, pairs, pair);
        });
    }
    if (last != points.end()) pairs.push_back(pair(*last));
    return pairs;
}

Pairs pathOf(const TrendPoints& points, const Span& span, int buckets)
{
    const auto [first, last] = within(points, span);
    const auto pair = [](const TrendPoint& point) {
        return std::pair(point.of(Sensor::X), point.of(Sensor::Y));
    };
    Pairs pairs;
    if (last - first <= 4 * std::ptrdiff_t{buckets}) {
        std::transform(first, last, std::back_inserter(pairs), pair);
    } else {
        eachBucket(first, last, span, buckets, [&](Point begin, Point end) {
            std::array<Point, 4> extremes{end, end, end, end};
            for (auto point = begin; point != end; ++point) {
                keepLeast(extremes[0], point, end, [](const TrendPoint& p) { return p.of(Sensor::X); });
                keepLeast(extremes[1], point, end, [](const TrendPoint& p) { return -p.of(Sensor::X); });
                keepLeast(extremes[2], point, end, [](const TrendPoint& p) { return p.of(Sensor::Y); });
                keepLeast(extremes[3], point, end, [](const TrendPoint& p) { return -p.of(Sensor::Y); });
            }
            std::vector<Point> chosen;
            std::copy_if(extremes.begin(), extremes.end(), std::back_inserter(chosen),
                         [end](Point point) { return point != end; });
            addInOrder(chosen, pairs, pair);
        });
    }
    return pairs;
}

const TrendPoint* nearest(const TrendPoints& points, double time)
{
    auto after = std::lower_bound(points.begin(), points.end(), time, isEarlier);
    auto before = after;
    while (after != points.end() && !hasPlace(*after))
        ++after;
    while (before != points.begin() && !hasPlace(*(before - 1)))
        --before;
    const bool hasBefore = before != points.begin();
    if (after == points.end()) return hasBefore ? &*(before - 1) : nullptr;
    if (!hasBefore || after->time - time < time - (before - 1)->time) return &*after;
    return &*(before - 1);
}

const TrendPoint* stepped(const TrendPoints& points, double time, int steps)
{
    const auto* at = nearest(points, time);
    if (!at) return nullptr;
    const auto direction = steps < 0 ? -1 : 1;
    auto place = at - points.data();
    for (auto left = std::abs(steps); left > 0;) {
        place += direction;
        if (place < 0 || place >= static_cast<std::ptrdiff_t>(points.size())) break;
        const auto& point = points[static_cast<std::size_t>(place)];
        if (!hasPlace(point)) continue;
        at = &point;
        --left;
    }
    return at;
}

} // namespace quorvel::site
