#include "sim/calibration.h"

#include "sim/text.h"

#include <algorithm>
#include <utility>

namespace quorvelsim {

bool CalibrationTable::load(std::string_view fields)
{
    std::vector<CalibrationPoint> points;
    for (std::size_t i = 0; i < kPoints; ++i) {
        const auto reading = signedNumber(mid(fields, 1 + 16 * i, 8));
        const auto dial = signedNumber(mid(fields, 9 + 16 * i, 8));
        if (!reading || !dial) return false;
        points.push_back({*reading, *dial});
    }
    points_ = points;
    std::stable_sort(points.begin(), points.end(),
                     [](const auto& a, const auto& b) { return a.reading < b.reading; });
    const auto same = [](const auto& a, const auto& b) { return a.reading == b.reading; };
    points.erase(std::unique(points.begin(), points.end(), same), points.end());
    ascending_ = std::move(points);
    return true;
}

double CalibrationTable::correct(double reading) const
{
    if (ascending_.size() < 2) return reading;
    const auto above =
        std::upper_bound(ascending_.begin() + 1, ascending_.end() - 1, reading,
                         [](double value, const auto& point) { return value < point.reading; });
    const auto& right = *above;
    const auto& left = *(above - 1);
    return left.dial + (reading - left.reading) * (right.dial - left.dial) / (right.reading - left.reading);
}

} // namespace quorvelsim
